// Decimal text to binary floating point, correctly rounded whatever the length of the text.
//
// The grammar is: digits, an optional point with more digits, an optional exponent letter (E or D, either
// case) with an optional sign and at least one digit. The number may begin with the point when a digit
// follows it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvane {

// What scan_decimal() found at the beginning of a text.
struct DecimalShape {
    std::size_t length;    // characters of the number; 0 when the text does not begin with one
    std::size_t digits;    // digits of the mantissa as written, leading zeros included
    bool point;            // has a point
    char exponent_letter;  // 'E' or 'D', 0 without an exponent
};

// Finds the longest number at the beginning of a text. An exponent letter without digits is not part of it.
DecimalShape scan_decimal(std::string_view text);

// The longest number at the beginning of a text, rounded as below, and how many characters it has; 0 when the
// text does not begin with one.
struct LeadingNumber {
    double number;
    std::size_t length;
};
LeadingNumber leading_decimal(std::string_view text);

// The number that a text, whole as delimited by scan_decimal(), stands for: rounded to nearest, ties to even;
// beyond the range an infinity, below it zero.
inline double decimal_to_double(std::string_view number) {
    return leading_decimal(number).number;
}

// The same rounded once to binary32 (subnormals and range included), as a binary64 number.
double decimal_to_single(std::string_view number);

// 10 to the power 0 to 308, correctly rounded (exact up to 22).
double power_of_ten(int exponent);

}  // namespace korvane
