// The operators on evaluated operands: promotion, overflow and comparison rules in one place.
#pragma once

#include <cstdint>

#include "numbers/value.h"

namespace korvane {

// The binary arithmetic operators + - * / \ and KW_MOD; "+" concatenates two strings. Raises "Type mismatch",
// "Overflow", "Division by zero", "Out of string space".
Value arithmetic(std::uint8_t operation, const Value& left, const Value& right);

// AND, OR, XOR, EQV and IMP (their keyword codes) on all 64 bits. A string is "Type mismatch".
Value logical(std::uint8_t operation, const Value& left, const Value& right);

// base ^ exponent, always a DOUBLE. Raises "Type mismatch", "Division by zero", "Illegal function call" (a
// negative base with a broken exponent) and "Overflow".
Value power(const Value& base, const Value& exponent);

// Unary minus. Raises "Overflow" for the most negative INT64 and "Type mismatch" for a string.
Value negate(const Value& operand);

// Three-way comparison: -1, 0 or 1. A string with a number is "Type mismatch", a NaN "Illegal function call".
int compare(const Value& left, const Value& right);

}  // namespace korvane
