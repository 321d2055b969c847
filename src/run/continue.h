// The CONT command.
#pragma once

#include "program/token.h"

namespace korvane {

// Resumes the program where STOP, a breakpoint or Escape left it and runs it to its end.
// Raises "Can't continue".
void do_cont(Cursor& cursor);

}  // namespace korvane
