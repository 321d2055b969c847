// The expression evaluator: a precedence-climbing parser that works directly on token records,
// without a tree.
//
// Every function advances the cursor past what it read and leaves it on the first token that is no part of
// the expression. On failure an error is pending and the result is meaningless;
// callers look at error_pending().
#pragma once

#include <cstdint>

#include "numbers/value.h"
#include "program/token.h"

namespace korvane {

// One full expression. Raises "Syntax error" where an operand is missing, "Expected )", "Type mismatch",
// "Overflow", "Division by zero", "Illegal function call", "Array not dimensioned" and what functions raise.
Value evaluate(Cursor& cursor);

// An expression converted to a 64-bit integer, floats rounded half away from zero.
// A string is "Type mismatch".
std::int64_t evaluate_integer(Cursor& cursor);

// An expression as a condition: true when not zero. A string is "Type mismatch".
bool evaluate_truth(Cursor& cursor);

// An expression that must be a string, else "Type mismatch". The Value refers to bytes it does not own.
Value evaluate_string(Cursor& cursor);

// The line-number conversion: integer by the rounding rule, a string is "Type mismatch", a negative value is
// "Illegal function call". The user of the number checks its upper bound.
std::int64_t evaluate_line_number(Cursor& cursor);

// A string expression copied, zero-terminated, into `buffer`: at most capacity - 1 bytes. A non-string is
// "Type mismatch". Returns the number of bytes copied (0 on error); an empty text raises nothing here.
std::uint32_t evaluate_text(Cursor& cursor, char* buffer, std::uint32_t capacity);

}  // namespace korvane
