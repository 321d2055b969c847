#include "numbers/decimal.h"

#include <algorithm>
#include <array>
#include <bit>

#include "numbers/big_natural.h"
#include "numbers/scaled.h"
#include "platform/characters.h"

namespace korvane {
namespace {

// A midpoint between two binary64 numbers has at most 767 significant digits; the digits of a longer text
// matter only through whether any of them is not zero.
constexpr std::int64_t digit_limit = 768;

// The powers that are exact in binary64.
constexpr std::array<double, 23> powers_of_ten = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Decimal magnitudes (positions of the first digit, 1 for 1 to 9)
// outside these round to infinity and to zero.
constexpr std::int64_t highest_magnitude = 309;
constexpr std::int64_t lowest_magnitude = -323;

// Digits that 64 bits hold, and room for one more unit.
constexpr std::int64_t head_digits = 19;

// A number as text: its mantissa's digits (with the point among them) and exponent.
struct Decimal {
    DecimalShape shape;
    std::string_view mantissa;  // from the first digit that is not zero; empty for zero
    std::uint64_t head;         // value of the first 19 or fewer digits of it
    std::int64_t digits;        // digits in the mantissa
    std::int64_t exponent;      // the number is the mantissa, read as an integer, times 10^exponent
};

// The exponent, if there is one behind the mantissa. Its value saturates far outside the range that a text's
// length could bring back.
void read_exponent(std::string_view text, Decimal& decimal) {
    std::size_t position = decimal.shape.length;
    const char letter = fold_to_upper(text[position]);
    if (letter != 'E' && letter != 'D') return;
    ++position;
    const bool negative = position < text.size() && text[position] == '-';
    if (negative || (position < text.size() && text[position] == '+')) ++position;
    const std::size_t start = position;
    std::int64_t exponent = 0;
    for (; position < text.size() && is_digit(text[position]); ++position)
        if (exponent < 1'000'000'000'000'000) exponent = 10 * exponent + (text[position] - '0');
    if (position == start) return;
    decimal.shape.length = position;
    decimal.shape.exponent_letter = letter;
    decimal.exponent += negative ? -exponent : exponent;
}

// The value of the mantissa's first digits, as many as a head has.
[[gnu::cold]] std::uint64_t read_head(std::string_view mantissa) {
    std::uint64_t head = 0;
    std::int64_t digits = 0;
    for (std::size_t i = 0; digits < head_digits; ++i) {
        if (mantissa[i] == '.') continue;
        head = 10 * head + static_cast<std::uint64_t>(mantissa[i] - '0');
        ++digits;
    }
    return head;
}

// The longest number at the beginning of a text. What changes with every character is kept in variables of
// its own: they have registers, which fields of the result would not have.
Decimal parse(std::string_view text) {
    const std::size_t nowhere = text.size();
    std::size_t point = nowhere;
    std::size_t position = 0;
    const auto take_point = [&] {
        if (text[position] != '.' || point != nowhere) return false;
        point = position;
        return true;
    };
    while (position < text.size() && (text[position] == '0' || take_point()))
        ++position;
    const std::size_t start = position;
    std::uint64_t head = 0;
    for (; position < text.size(); ++position) {
        const auto digit = static_cast<std::uint32_t>(text[position] - '0');
        if (digit <= 9)
            head = 10 * head + digit;
        else if (!take_point())
            break;
    }
    Decimal decimal{};
    const bool has_point = point != nowhere;
    const std::size_t digits = position - (has_point ? 1 : 0);
    if (digits == 0) return decimal;
    decimal.shape = {position, digits, has_point, 0};
    if (has_point) decimal.exponent = -static_cast<std::int64_t>(position - point - 1);
    decimal.mantissa = text.substr(start, position - start);
    decimal.digits = static_cast<std::int64_t>(position - start - (has_point && point >= start ? 1 : 0));
    decimal.head = decimal.digits <= head_digits ? head : read_head(decimal.mantissa);
    if (position < text.size()) read_exponent(text, decimal);
    return decimal;
}

// The layout of a binary format.
struct Format {
    std::int32_t precision;  // bits of a normal number's mantissa
    std::int32_t lowest;     // binary exponent of the smallest normal number
    std::int32_t highest;    // binary exponent of the largest numbers
};
constexpr Format binary64 = {53, -1022, 1023};
constexpr Format binary32 = {24, -126, 127};

// Rounds to nearest, ties to even. The result is the bits of the format without sign.
std::uint64_t round_to(const Format& format, const Scaled& number) {
    const std::int32_t leading = number.exponent + 63;
    const std::uint64_t infinity = static_cast<std::uint64_t>(format.highest - format.lowest + 2)
                                   << (format.precision - 1);
    if (leading > format.highest) return infinity;
    const std::int32_t missing = std::max(0, format.lowest - leading);  // bits that a subnormal lacks
    const std::int32_t dropped = 64 - format.precision + missing;
    if (dropped > 64) return 0;
    const std::uint64_t kept = dropped == 64 ? 0 : number.quotient >> dropped;
    const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    const std::uint64_t tail = dropped == 64 ? number.quotient : number.quotient & (2 * half - 1);
    const bool up = tail > half || (tail == half && (number.has_rest || (kept & 1) != 0));
    // The exponent field is added so that a carry out of the mantissa moves into it, up to infinity.
    const std::int32_t field = missing > 0 ? 0 : leading - format.lowest;
    return (static_cast<std::uint64_t>(field) << (format.precision - 1)) + kept + (up ? 1 : 0);
}

// All digits that matter, as an integer; `exponent` is adjusted for those left out.
BigNatural read_digits(const Decimal& decimal, std::int64_t& exponent) {
    BigNatural result(0);
    std::int64_t taken = 0;
    std::uint64_t block = 0;
    std::uint64_t scale = 1;
    bool rest = false;
    for (const char character : decimal.mantissa) {
        if (character == '.') continue;
        if (taken == digit_limit) {
            rest = rest || character != '0';
            continue;
        }
        block = 10 * block + static_cast<std::uint64_t>(character - '0');
        scale *= 10;
        taken++;
        if (scale == 1'000'000'000'000'000'000u) {
            result.multiply_add(scale, block);
            block = 0;
            scale = 1;
        }
    }
    result.multiply_add(scale, block);
    exponent += decimal.digits - taken;
    if (rest) {
        result.multiply_add(10, 1);
        exponent--;
    }
    return result;
}

// Exact long division of the number's numerator by its denominator to 64 bits and a rest.
[[gnu::cold]] Scaled scale(const Decimal& decimal) {
    std::int64_t exponent = decimal.exponent;
    BigNatural numerator = read_digits(decimal, exponent);
    BigNatural denominator(1);
    // 10^exponent is 5^exponent here and 2^exponent in the binary exponent.
    if (exponent >= 0)
        numerator.multiply_power(5, static_cast<std::uint32_t>(exponent));
    else
        denominator.multiply_power(5, static_cast<std::uint32_t>(-exponent));
    auto binary_exponent = static_cast<std::int32_t>(exponent);

    const std::uint32_t numerator_bits = numerator.bit_length();
    const std::uint32_t denominator_bits = denominator.bit_length();
    if (numerator_bits < denominator_bits)
        numerator.shift_left(denominator_bits - numerator_bits);
    else
        denominator.shift_left(numerator_bits - denominator_bits);
    binary_exponent +=
        static_cast<std::int32_t>(numerator_bits) - static_cast<std::int32_t>(denominator_bits);
    if (numerator.is_less_than(denominator)) {
        numerator.shift_left(1);
        binary_exponent--;
    }
    std::uint64_t quotient = 0;
    for (int bit = 0; bit < 64; bit++) {
        quotient <<= 1;
        if (!numerator.is_less_than(denominator)) {
            numerator.subtract(denominator);
            quotient |= 1;
        }
        numerator.shift_left(1);
    }
    return {quotient, !numerator.is_zero(), binary_exponent - 63};
}

// Decides by the head of the digits where that can be done: a number with more of them lies between its head
// and the next one.
bool convert_quickly(const Decimal& decimal, const Format& format, std::uint64_t& bits) {
    const std::int64_t left_out = std::max<std::int64_t>(decimal.digits - head_digits, 0);
    const auto power = static_cast<std::int32_t>(decimal.exponent + left_out);
    Scaled number;
    if (!scale_quickly(decimal.head, power, number)) return false;
    bits = round_to(format, number);
    if (left_out == 0) return true;
    return scale_quickly(decimal.head + 1, power, number) && round_to(format, number) == bits;
}

// The bits of the number in a format whose range lies within binary64's.
std::uint64_t convert(const Decimal& decimal, const Format& format) {
    const std::int64_t magnitude = decimal.digits + decimal.exponent;
    if (decimal.digits == 0 || magnitude < lowest_magnitude) return 0;
    if (magnitude > highest_magnitude)
        return round_to(format, {std::uint64_t{1} << 63, false, format.highest});
    std::uint64_t bits;
    return convert_quickly(decimal, format, bits) ? bits : round_to(format, scale(decimal));
}

double to_double(const Decimal& decimal) {
    // Both operands exact: the one rounding of the operation is the right one.
    constexpr std::int64_t exact = static_cast<std::int64_t>(powers_of_ten.size()) - 1;
    if (decimal.digits <= head_digits && decimal.head <= std::uint64_t{1} << 53) {
        const auto head = static_cast<double>(decimal.head);
        if (decimal.exponent >= 0 && decimal.exponent <= exact)
            return head * powers_of_ten[static_cast<std::size_t>(decimal.exponent)];
        if (decimal.exponent < 0 && decimal.exponent >= -exact)
            return head / powers_of_ten[static_cast<std::size_t>(-decimal.exponent)];
    }
    return std::bit_cast<double>(convert(decimal, binary64));
}

}  // namespace

DecimalShape scan_decimal(std::string_view text) {
    return parse(text).shape;
}

LeadingNumber leading_decimal(std::string_view text) {
    const Decimal decimal = parse(text);
    return {to_double(decimal), decimal.shape.length};
}

[[gnu::cold]] double decimal_to_single(std::string_view number) {
    const Decimal decimal = parse(number);
    constexpr std::int64_t exact = 10;  // 5^10 is the highest power of 5 within 24 bits
    if (decimal.digits <= head_digits && decimal.head <= std::uint64_t{1} << 24) {
        const auto head = static_cast<float>(decimal.head);
        if (decimal.exponent >= 0 && decimal.exponent <= exact)
            return head * static_cast<float>(powers_of_ten[static_cast<std::size_t>(decimal.exponent)]);
        if (decimal.exponent < 0 && decimal.exponent >= -exact)
            return head / static_cast<float>(powers_of_ten[static_cast<std::size_t>(-decimal.exponent)]);
    }
    return std::bit_cast<float>(static_cast<std::uint32_t>(convert(decimal, binary32)));
}

double power_of_ten(int exponent) {
    if (exponent < static_cast<int>(powers_of_ten.size()))
        return powers_of_ten[static_cast<std::size_t>(exponent)];
    const std::array<char, 5> text = {'1', 'E', static_cast<char>('0' + exponent / 100),
                                      static_cast<char>('0' + exponent / 10 % 10),
                                      static_cast<char>('0' + exponent % 10)};
    return decimal_to_double({text.data(), text.size()});
}

}  // namespace korvane
