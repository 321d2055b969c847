// Loops: FOR and NEXT, WHILE and WEND.
#pragma once

#include "core/token.h"

namespace korvane {

// FOR var = start TO limit [STEP step]. A loop that has nothing to do is passed over to behind its NEXT.
// Raises "Expected variable", "Expected =", "Expected TO", "Type mismatch", "Out of memory" beyond 64 levels,
// "Illegal function call" for a NaN step. Re-entering an unfinished FOR stacks another entry (deliberate).
void do_for(Cursor& cursor);

// NEXT [var]: one variable at most. Raises "NEXT without FOR" and "Overflow".
void do_next(Cursor& cursor);

// WHILE condition. A false one continues behind its WEND; without one the program ends silently (deliberate).
void do_while(Cursor& cursor);

// WEND: back to the WHILE ("WEND without WHILE").
void do_wend(Cursor& cursor);

}  // namespace korvane
