// How numbers become text: the free form of PRINT and STR$, and the floating-point formatter beneath it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "numbers/value.h"

namespace korvane {

// A formatted number; the longest, a DOUBLE in exponent form, has 23 characters.
// Not zero-terminated.
struct NumberText {
    std::array<char, 32> characters;
    std::uint32_t size;

    std::string_view view() const { return {characters.data(), size}; }
};

// The free form of a number: "-" or a blank, the digits, a blank. STR$ is this without the last character.
// Integers are exact; SINGLE has 7 significant digits and exponent letter "E", DOUBLE 15 and "D". `value` is
// no string.
NumberText format_number(const Value& value);

// Brings a positive finite number between 1 and 10 by single steps, a division or a multiplication by 10
// each, and returns how many powers of ten it lost. The rounding of each step is part of the result.
int normalize(double& number);

// A number in decimal, without sign place or blanks.
NumberText format_unsigned(std::uint64_t number);

// Most characters that format_magnitude() writes for a number of significant digits.
constexpr std::size_t magnitude_size(int digits) {
    return static_cast<std::size_t>(digits) + 8;
}

// The general formatter: a magnitude (not negative) with 1 to 300 significant digits, in exponent form with
// the given letter below 1E-4 and from 10^digits on, otherwise plain; trailing zeros and a zero before the
// point are left out. A NaN is "NAN", an infinity "INF", zero "0". `text` has room for magnitude_size(digits)
// characters; returns how many were written.
//
// The digits are those that dividing or multiplying by 10 step by step yields in binary64, deliberately: they
// are part of the language, also where they differ from the correctly rounded ones.
std::size_t format_magnitude(double magnitude, int digits, char exponent_letter, std::span<char> text);

// Most characters that write_integral() writes.
constexpr std::size_t integral_size = 309;

// All decimal digits of a finite integral number that is not negative. `text` has room for integral_size
// characters or for as many as the number has; returns how many were written.
std::size_t write_integral(double integral, std::span<char> text);

}  // namespace korvane
