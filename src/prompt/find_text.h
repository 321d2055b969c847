// The FIND command. FIND is no keyword: the command loop recognises the name.
#pragma once

#include "program/token.h"

namespace korvane {

// FIND string$ [, range], the cursor on the name FIND: lists the stored lines whose text holds the string,
// letters compared without case. Prints "(not found)" when there is none. Raises "Type mismatch", "Expected
// line number", "Expected line range", "Line number too large", "Illegal function call" and "Syntax Error".
void do_find(Cursor& cursor);

}  // namespace korvane
