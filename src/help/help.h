// HELP: the categorised built-in language reference.
#pragma once

#include "program/token.h"

namespace korvane {

// HELP [name]: an index of all entries by category, or the text of one. The name is written bare. Raises
// "Syntax Error" for anything else.
void do_help(Cursor& cursor);

}  // namespace korvane
