// VARINFO and ARRAYINFO: listings of the variable table.
#pragma once

#include "program/token.h"

namespace korvane {

// VARINFO [SIMPLE | FULL | 0 | 1] lists the scalars, ARRAYINFO the arrays, a page at a time. Raise "Expected
// SIMPLE or FULL" and "Illegal function call".
void do_varinfo(Cursor& cursor);
void do_arrayinfo(Cursor& cursor);

}  // namespace korvane
