// Numbers in text that comes from outside a program: data items, answers to INPUT, the argument of VAL. Other
// than literals they may carry a sign.
#pragma once

#include <cstdint>
#include <string_view>

#include "numbers/value.h"

namespace korvane {

enum class NumberReading {
    number,        // the text is a number
    not_a_number,  // it is something else
    too_large,     // it is a number out of range
};

// The integer form: blanks and tabs, a sign, decimal digits or &H or &O digits, blanks and tabs; a text of
// blanks and tabs only is 0. A decimal number followed by ".", "E" or "D" is not an integer. Too large is a
// number outside the INT64 range. Raises nothing.
NumberReading text_to_integer(std::string_view text, std::int64_t& integer);

// The floating form: blanks and tabs, a sign, a decimal number with an optional suffix ! or #, or &H or &O
// digits, blanks and tabs; a text of blanks and tabs only is 0. The result is correctly rounded. Too large
// is a number beyond the range of DOUBLE, and one with a prefix and more than 64 bits. Raises nothing.
NumberReading text_to_double(std::string_view text, double& number);

// The integer form, else the floating form.
NumberReading text_to_number(std::string_view text, Value& number);

// What VAL gives: after blanks and tabs the longest beginning of the text that is a number, as a correctly
// rounded DOUBLE; 0 when there is none. &H and &O forms give an integer, typed like a literal's. Of type NONE
// for what is too large for text_to_double(). Raises nothing.
Value longest_number(std::string_view text);

}  // namespace korvane
