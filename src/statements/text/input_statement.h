// INPUT and LINE INPUT from the keyboard.
#pragma once

#include "program/token.h"

namespace korvane {

// INPUT ["prompt" {;|,}] variable [, variable ...], at most 16 variables; INPUT #n goes to do_input_file(). A
// reply that has too few fields or does not convert prints "?Redo from start" and asks again; a reply with
// too many prints "Extra ignored". Escape breaks and assigns nothing. Raises "Syntax Error", "Expected
// variable", "Array not dimensioned" and what subscripts raise.
void do_input(Cursor& cursor);

// LINE INPUT ["prompt"[;]] variable$, the cursor on LINE: one whole line of at most 255 bytes. LINE INPUT #n
// goes to do_line_input_file(). Raises "Type mismatch" for a numeric variable.
void do_line_input(Cursor& cursor);

}  // namespace korvane
