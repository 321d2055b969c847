// Conversions between the numeric types. Every conversion of a float to an integer in the language goes
// through nearest_integer() of numbers/rounding.h, most of them here.
#pragma once

#include <cstdint>

#include "numbers/value.h"

namespace korvane {

// nearest_integer(); a NaN or a result outside the INT64 range raises "Overflow" and gives 0.
std::int64_t round_to_integer(double number);

// The value as a 64-bit integer: integer types unchanged, floats rounded as above. A string raises "Type
// mismatch" and gives 0.
std::int64_t to_integer(const Value& value);

// The value as a binary64 number: integers rounded to nearest. A string raises "Type mismatch" and gives 0.
double to_double(const Value& value);

// A number rounded to binary32 precision; beyond its range an infinity.
inline double to_single(double number) {
    return static_cast<double>(static_cast<float>(number));
}

// "INTEGER", "LONG", "INT64", "SINGLE", "DOUBLE" or "STRING"; empty for NONE. The bytes are zero-terminated.
const char* type_name(Type type);

}  // namespace korvane
