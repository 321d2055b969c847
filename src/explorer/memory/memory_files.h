#pragma once

#include "explorer/command.h"

namespace korvane {

// `SAVE file start end`: writes a range of memory to a file, byte for byte.
CommandEnd do_save_memory(WordReader& arguments);

// `LOAD file address`: reads a file into memory.
CommandEnd do_load_memory(WordReader& arguments);

}  // namespace korvane
