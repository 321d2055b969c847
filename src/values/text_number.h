// Numbers in text that comes from outside a program: data items, answers to INPUT, the argument of VAL. Other
// than literals they may carry a sign.
#pragma once

#include <cstdint>
#include <string_view>

#include "numbers/value.h"

namespace korvane {

enum class NumberReading {
    number,        // the text is a number
    not_a_number,  // it is something else; nothing was raised
    failed,        // it is a number out of range; "Overflow" was raised
};

// The integer form: blanks and tabs, a sign, decimal digits or &H or &O digits, blanks and tabs; a text of
// blanks and tabs only is 0. A decimal number followed by ".", "E" or "D" is not an integer. Raises
// "Overflow" when the number is outside the INT64 range.
NumberReading text_to_integer(std::string_view text, std::int64_t& integer);

// The floating form: blanks and tabs, a sign, a decimal number with an optional suffix ! or #, or &H or &O
// digits, blanks and tabs; a text of blanks and tabs only is 0. The result is correctly rounded. Raises
// "Overflow" when the number is too large for a DOUBLE, or has more than 64 bits.
NumberReading text_to_double(std::string_view text, double& number);

// Whether reading the text as a number cannot raise "Overflow": it is short and has neither an exponent nor a
// prefix. Then VAL gives a DOUBLE.
bool cannot_overflow(std::string_view text);

// What VAL gives: after blanks and tabs the longest beginning of the text that is a number, as a correctly
// rounded DOUBLE; 0 when there is none. &H and &O forms give an integer, typed like a literal's. Raises
// "Overflow" like text_to_double().
Value longest_number(std::string_view text);

}  // namespace korvane
