// Statements that move values into variables: LET (with or without the word),
// the MID$ statement, SWAP, RANDOMIZE.
#pragma once

#include "program/token.h"

namespace korvane {

// LET target = expression. A scalar target is created before "=" is looked for and before the expression is
// evaluated, so a failing assignment can leave a new variable holding 0. Raises "Expected variable",
// "Expected =", "Illegal function call" for a system variable, "Array not dimensioned" and what the
// expression and the store raise.
void do_let(Cursor& cursor);

// The same without the word LET: the cursor stands on the target.
void do_assignment(Cursor& cursor);

// SWAP a, b exchanges the raw storage of two places of the same type ("Type mismatch" otherwise).
void do_swap(Cursor& cursor);

// RANDOMIZE [n]: without n the firmware's clock gives the seed.
void do_randomize(Cursor& cursor);

}  // namespace korvane
