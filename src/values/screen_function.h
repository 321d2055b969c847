// SCREEN(row, column[, mode]) as a function: what stands on the text screen.
#pragma once

#include "numbers/value.h"
#include "program/token.h"

namespace korvane {

// The cursor stands on SCREEN. Row and column count from 1. Gives the character code in the cell as an
// INTEGER, or always 7 when mode is not zero (deliberate: cells have no attributes). Raises "Syntax error"
// without "(", "Expected ,", "Expected )" and "Illegal function call" outside the screen.
Value screen_function(Cursor& cursor);

}  // namespace korvane
