#pragma once

#include "explorer/command.h"

namespace korvane {

// The reports that `L`, `MAP` and `I` share with the statement's direct forms.
void print_landmarks();
void print_memory_map();
void print_machine_information();

CommandEnd do_landmarks(WordReader& arguments);
CommandEnd do_memory_map(WordReader& arguments);
CommandEnd do_machine_information(WordReader& arguments);

// `R address`: the region of a fresh memory map that contains the address.
CommandEnd do_region(WordReader& arguments);

// `W address`: the nearest landmark at or below the address, and its region.
CommandEnd do_where(WordReader& arguments);

}  // namespace korvane
