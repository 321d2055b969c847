// DEF FN.
#pragma once

#include "program/token.h"

namespace korvane {

// DEF FNname[(parameter[, parameter...])] = expression. The body is kept as tokens, its text literals in
// string space. Raises "Expected FN name", "Too many DEF FN", "Expected parameter", "Too many params",
// "Expected )", "Expected =", "DEF FN too long" and "Out of string space"; nothing is changed then.
void do_def(Cursor& cursor);

}  // namespace korvane
