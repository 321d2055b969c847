#pragma once

#include "explorer/command.h"

namespace korvane {

// `V address`: the eight bytes at an address as integers of every width, floating-point numbers and text.
CommandEnd do_view(WordReader& arguments);

}  // namespace korvane
