// Held arguments: the expressions of a statement that has no specialised form of its own. One that is
// evaluated for the second time in a clear generation becomes a chain of steps (fast/), and its first record
// keeps where that begins, so that evaluate() finds it there, whichever statement asks.
//
// The steps lie in the argument's own records, and in those of everything within it. So whoever has steps in
// these already must not have them overwritten, or find others: a specialised statement that falls back to
// its general handler, and a held argument that failed. While one of these is evaluated, `in_use` is off, and
// marks are neither looked at nor made.
#pragma once

#include "numbers/value.h"
#include "program/token.h"

namespace korvane {

struct HeldArguments {
    bool in_use;
};
extern HeldArguments held_arguments;

// Where arguments are in use: the value of the expression at the cursor, as evaluate() gives it. Defined with
// the specialised statements.
Value evaluate_argument(Cursor& cursor);

// The expression as a whole by the general evaluator.
Value evaluate_unheld(Cursor& cursor);

}  // namespace korvane
