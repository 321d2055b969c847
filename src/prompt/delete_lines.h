// The DELETE command.
#pragma once

#include "program/token.h"

namespace korvane {

// DELETE n | n-m | -m | n-: removes stored lines. Raises "Illegal direct" while a program runs, "Syntax
// Error" without a range, "Illegal function call" for a number out of range, a reversed range or one that
// holds no line.
void do_delete(Cursor& cursor);

}  // namespace korvane
