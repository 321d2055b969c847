#pragma once

#include <string_view>

#include "explorer/command.h"
#include "program/token.h"

namespace korvane {

// The machine explorer: a line-oriented monitor over the flat 64-bit address space, the firmware's tables,
// the disks and the volumes. It never raises an error of the language: every problem is a printed message,
// and the next command follows.

// Start-up: no dump made, no memory map taken.
void initialize_explorer();

// `KORVANE` enters the explorer; `KORVANE LANDMARKS`, `MEMMAP` or `MAP`, and `INFO` print one report.
// Anything else raises "Syntax Error".
void do_korvane(Cursor& cursor);

// Executes one command line, the prompt not included. done, or leave when it was the command to leave.
CommandEnd execute_explorer_line(std::string_view line);

}  // namespace korvane
