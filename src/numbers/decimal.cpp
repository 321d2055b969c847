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

// Digits that 64 bits hold, and room for one more unit.
constexpr std::int64_t head_digits = 19;

// A number as text: its mantissa's digits (with the point among them) and exponent. It is the head, and a
// part of a unit if digits are left out of it, times 10^power.
struct Decimal {
    DecimalShape shape;
    std::string_view mantissa;  // as written; of more than 19 digits from the first that is not zero
    std::uint64_t head;         // value of the first 19 or fewer digits of it; 0 only for zero
    std::int64_t left_out;      // digits behind those
    std::int64_t power;
};

// The head of a mantissa of many digits, and what is left out of it.
[[gnu::noinline]] void read_head(Decimal& decimal) {
    std::string_view& mantissa = decimal.mantissa;
    auto digits = static_cast<std::int64_t>(decimal.shape.digits);
    for (; !mantissa.empty() && (mantissa.front() == '0' || mantissa.front() == '.');
         mantissa.remove_prefix(1))
        if (mantissa.front() == '0') --digits;
    decimal.left_out = std::max<std::int64_t>(digits - head_digits, 0);
    std::uint64_t head = 0;
    const char* at = mantissa.data();
    for (std::int64_t left = digits - decimal.left_out; left > 0; ++at) {
        if (*at == '.') continue;
        head = 10 * head + static_cast<std::uint64_t>(*at - '0');
        --left;
    }
    decimal.head = head;
    decimal.power += decimal.left_out;
}

// The exponent at a place behind a mantissa, which moves behind it; 0, and it stays, when there is none. The
// value saturates far outside the range that a text's length could bring back.
inline std::int64_t read_exponent(const char*& place, const char* end) {
    const char* at = place;
    if (at == end) return 0;
    const char letter = fold_to_upper(*at);
    if (letter != 'E' && letter != 'D') return 0;
    ++at;
    const bool negative = at != end && *at == '-';
    if (negative || (at != end && *at == '+')) ++at;
    const char* const start = at;
    std::int64_t exponent = 0;
    for (; at != end && is_digit(*at); ++at)
        if (exponent < 1'000'000'000'000'000) exponent = 10 * exponent + (*at - '0');
    if (at != start) place = at;
    return negative ? -exponent : exponent;
}

// The longest number at the beginning of a text. What changes with every character is kept in variables of
// its own: they have registers, which fields of the result would not have.
Decimal parse(std::string_view text) {
    const char* const end = text.data() + text.size();
    const char* at = text.data();
    const char* point = nullptr;
    std::uint64_t head = 0;
    for (; at != end; ++at) {
        const auto digit = static_cast<std::uint32_t>(*at - '0');
        if (digit <= 9)
            head = 10 * head + digit;
        else if (*at == '.' && point == nullptr)
            point = at;
        else
            break;
    }
    Decimal decimal{};
    const auto length = static_cast<std::size_t>(at - text.data());
    const std::size_t digits = length - (point != nullptr ? 1 : 0);
    if (digits == 0) return decimal;
    decimal.shape = {length, digits, point != nullptr, 0};
    decimal.mantissa = text.substr(0, length);
    decimal.head = head;
    std::int64_t power = point != nullptr ? point + 1 - at : 0;
    const char* behind = at;
    power += read_exponent(behind, end);
    if (behind != at) {
        decimal.shape.length = static_cast<std::size_t>(behind - text.data());
        decimal.shape.exponent_letter = fold_to_upper(*at);
    }
    decimal.power = power;
    if (digits > head_digits) read_head(decimal);
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
            exponent++;
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
    if (rest) {
        result.multiply_add(10, 1);
        exponent--;
    }
    return result;
}

// Exact long division of the number's numerator by its denominator to 64 bits and a rest.
[[gnu::cold]] Scaled scale(const Decimal& decimal) {
    std::int64_t exponent = decimal.power - decimal.left_out;
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
    return {quotient, binary_exponent - 63, !numerator.is_zero()};
}

// Decides by the head of the digits where that can be done: a number with more of them lies between its head
// and the next one.
bool convert_quickly(const Decimal& decimal, const Format& format, std::uint64_t& bits) {
    const auto power = static_cast<std::int32_t>(decimal.power);
    const Scaled number = scale_quickly(decimal.head, power);
    if (number.quotient == 0) return false;
    bits = round_to(format, number);
    if (decimal.left_out == 0) return true;
    const Scaled next = scale_quickly(decimal.head + 1, power);
    return next.quotient != 0 && round_to(format, next) == bits;
}

// The bits of the number in a format whose range lies within binary64's: what is beyond the powers that can
// be scaled is far outside of it, whatever the head.
[[gnu::noinline]] std::uint64_t convert(const Decimal& decimal, const Format& format) {
    if (decimal.head == 0 || decimal.power < lowest_scale) return 0;
    if (decimal.power > highest_scale)
        return round_to(format, {std::uint64_t{1} << 63, format.highest, false});
    std::uint64_t bits;
    return convert_quickly(decimal, format, bits) ? bits : round_to(format, scale(decimal));
}

// Whether binary64 has the number with all its bits, however it is rounded.
bool is_normal(const Scaled& number) {
    const std::int32_t leading = number.exponent + 63;
    return leading >= binary64.lowest && leading < binary64.highest;
}

// What round_to() makes of a normal number.
double round_normal(const Scaled& number) {
    constexpr std::int32_t dropped = 64 - binary64.precision;
    constexpr std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    const std::uint64_t kept = number.quotient >> dropped;
    const std::uint64_t tail = number.quotient & (2 * half - 1);
    const bool beyond_tie = number.has_rest || (kept & 1) != 0;
    const bool up = tail + (beyond_tie ? 1 : 0) > half;
    const auto field = static_cast<std::uint64_t>(number.exponent + 63 - binary64.lowest);
    return std::bit_cast<double>((field << (binary64.precision - 1)) + kept + (up ? 1 : 0));
}

double to_double(const Decimal& decimal) {
    if (decimal.left_out != 0 || decimal.head == 0) return std::bit_cast<double>(convert(decimal, binary64));
    // Both operands exact: the one rounding of the operation is the right one.
    constexpr std::int64_t exact = static_cast<std::int64_t>(powers_of_ten.size()) - 1;
    if (decimal.head <= std::uint64_t{1} << 53) {
        const auto head = static_cast<double>(decimal.head);
        if (decimal.power >= 0 && decimal.power <= exact)
            return head * powers_of_ten[static_cast<std::size_t>(decimal.power)];
        if (decimal.power < 0 && decimal.power >= -exact)
            return head / powers_of_ten[static_cast<std::size_t>(-decimal.power)];
    }
    if (decimal.power >= lowest_scale && decimal.power <= highest_scale) {
        const Scaled number = scale_quickly(decimal.head, static_cast<std::int32_t>(decimal.power));
        if (number.quotient != 0 && is_normal(number)) return round_normal(number);
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

double decimal_to_single(std::string_view number) {
    return std::bit_cast<float>(static_cast<std::uint32_t>(convert(parse(number), binary32)));
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
