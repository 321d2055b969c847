#pragma once

#include "explorer/command.h"

namespace korvane {

// `CAT v file`: a file as text.
CommandEnd do_cat(WordReader& arguments);

// `HEXFILE v file`: a file as a hexadecimal and character dump.
CommandEnd do_hex_file(WordReader& arguments);

}  // namespace korvane
