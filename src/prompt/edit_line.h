// The EDIT command: shows a stored line for editing in place.
#pragma once

#include "program/token.h"

namespace korvane {

// EDIT n | EDIT ERL: prints the line and leaves the console cursor at its beginning, with the next "Ready."
// suppressed. Raises "Illegal direct" while a program runs, "Syntax error", "Line number too large", "No
// error line" and, for EDIT ERL only, "Undefined line number".
void do_edit(Cursor& cursor);

}  // namespace korvane
