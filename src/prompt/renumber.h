// The RENUM command: new line numbers, and the references to them rewritten inside the program's text.
#pragma once

#include "program/token.h"

namespace korvane {

// RENUM [new] [, [old] [, increment]]. Works in the free part of the data arena without allocating it; an
// error leaves the program as it was. Raises "Illegal function call", "Out of memory", "Line too long",
// "Program too large" and what the number expressions raise.
void do_renum(Cursor& cursor);

}  // namespace korvane
