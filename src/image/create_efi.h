// CREATEEFI file$: writes a standalone application that runs the program in memory.
#pragma once

#include "program/token.h"

namespace korvane {

// Copies the running image's own file and appends the program. Raises "Illegal direct" while a program runs,
// "No program", "Type mismatch", "Bad file name", "File not found" (own image), "Out of memory" (no room for
// its copy) and "Disk I/O error" (output deleted).
void do_createefi(Cursor& cursor);

}  // namespace korvane
