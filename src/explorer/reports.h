#pragma once

#include "explorer/command.h"

namespace korvane {

// The reports that `L`, `MAP` and `I` share with the statement's direct forms.
void print_landmarks();
void print_memory_map();
void print_machine_information();

Outcome do_landmarks(WordReader& arguments);
Outcome do_memory_map(WordReader& arguments);
Outcome do_machine_information(WordReader& arguments);

/// `R address`: the region of a fresh memory map that contains the address.
Outcome do_region(WordReader& arguments);

/// `W address`: the nearest landmark at or below the address, and its region.
Outcome do_where(WordReader& arguments);

}  // namespace korvane
