// CHAIN and COMMON: going on in another program, with some of the variables.
#pragma once

#include "program/token.h"

namespace korvane {

// COMMON var[()][, var[()] ...]. Raises "Expected variable", "Syntax Error" ("(" without ")"), "Duplicate
// definition" and "Too many variables".
void do_common(Cursor& cursor);

// CHAIN [MERGE] file$[, [line][, [ALL][, DELETE range]]]: replaces the program, or with MERGE overlays it,
// and goes on with it. The variables are thinned out and the range is deleted before the file is opened,
// deliberately: a failure from then on does not bring them back. Open files stay open. Raises "Type
// mismatch", "Syntax Error", "Illegal function call", "File not found", "Undefined line" and what
// read_program_text() raises.
void do_chain(Cursor& cursor);

}  // namespace korvane
