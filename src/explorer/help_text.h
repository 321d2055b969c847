#pragma once

#include "explorer/command.h"

namespace korvane {

// `?`: the help lines of all commands, those for memory before those for storage.
CommandEnd do_explorer_help(WordReader& arguments);

}  // namespace korvane
