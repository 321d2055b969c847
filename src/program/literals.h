// Numeric literals of the language, as the tokenizer meets them: their extent, their type and their value.
//
//   digits [. digits] [E|D [+|-] digits] [% | & | && | ! | #]     decimal; may begin with the point
//   &H hexadecimal digits [% | & | &&]     &O octal digits [% | & | &&]
//
// An exponent letter that no digit follows (after its sign) is not part of the literal, so that 1ELSE reads
// as 1 and ELSE. Letters may be of either case. The type of a decimal literal is that of its suffix; without
// one: INTEGER when it is an integer below 32768; else DOUBLE when its exponent letter is D, when its
// mantissa has 8 or more digits as written, or when it does not fit a SINGLE (too large, or not zero but
// rounded to zero); else SINGLE. Values are correctly rounded from the decimal text. Hexadecimal and octal
// literals are up to 64 bits, which a suffix takes as they are, without a range test (deliberate); without
// one they are the narrowest of INTEGER, LONG and INT64 that holds them as a non-negative number, from 2^63
// on the INT64 with those bits.
#pragma once

#include <cstddef>
#include <cstdint>

#include "numbers/value.h"

namespace korvane {

// Whether a zero-terminated text begins with a literal. "&" is no token of its own: it only begins a
// hexadecimal or octal number.
bool begins_literal(const std::uint8_t* text);

// The characters of the literal that a zero-terminated text begins with, its suffix included, whatever its
// value; "&H" or "&O" alone where no digit follows.
std::size_t literal_length(const std::uint8_t* text);

// Reads the literal at a zero-terminated text that begins with a digit, a point before a digit, or "&", and
// advances past it. On failure raises "Overflow" (too large for its suffix, for a DOUBLE or for 64 bits) or
// "Syntax Error" (a point or exponent in an integer literal, no H or O after "&", no digit after them), and
// returns false.
bool read_literal(const std::uint8_t*& text, Value& value);

}  // namespace korvane
