// Hexadecimal and octal digits behind &H and &O.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "numbers/value.h"

namespace korvane {

// What a text begins with.
struct PrefixedNumber {
    std::size_t length;  // characters of prefix and digits; 0 when the text does not begin with both
    std::uint64_t bits;  // the number
    bool too_large;      // it has more than 64 bits
};

// Reads "&H" or "&O" (either case) and at least one digit of that base (either case), as many as there are.
PrefixedNumber scan_prefixed(std::string_view text);

// The value of a hexadecimal digit of either case; 255 for any other character.
std::uint32_t digit_value(char character);

// A number as the narrowest of INTEGER, LONG and INT64 that holds it; from 2^63 on the INT64 with these bits.
Value narrowest_of_bits(std::uint64_t bits);

}  // namespace korvane
