#include "numbers/format.h"

#include <algorithm>
#include <bit>

#include "numbers/decimal.h"
#include "numbers/text_writer.h"

namespace korvane {
namespace {

constexpr int single_digits = 7;
constexpr int double_digits = 15;
constexpr double two_to_63 = 9223372036854775808.0;

// Decimal digits of an integer at the end of a block of 20; returns their number.
std::size_t write_digits(std::uint64_t integer, std::span<char, 20> block) {
    std::size_t position = block.size();
    do {
        block[--position] = static_cast<char>('0' + integer % 10);
        integer /= 10;
    } while (integer != 0);
    return block.size() - position;
}

std::size_t write_unsigned(std::uint64_t integer, std::span<char> text) {
    std::array<char, 20> block;
    const std::size_t size = write_digits(integer, block);
    std::copy(block.end() - static_cast<std::ptrdiff_t>(size), block.end(), text.begin());
    return size;
}

// ---- Division by ten ---------------------------------------------------------------------------------
//
// The digits of large numbers are those that single divisions by 10 leave, each with its rounding. A division
// by 10 takes a fifth of the mantissa, shifted so far that it keeps its 53 bits, to the nearest integer;
// there is no middle to round from. A mantissa below that of 10 loses four bits, and then three and three.

using Wide = unsigned __int128;

constexpr std::uint64_t leading_bit = std::uint64_t{1} << 52;
constexpr std::uint64_t mantissa_of_ten = 5 * leading_bit / 4;

// A fifth, rounded. Multiplying by a fifth of 2^64 is exact for shifted mantissas, and quicker than dividing.
constexpr std::uint64_t fifth_of(std::uint64_t number) {
    constexpr std::uint64_t factor = ~std::uint64_t{0} / 5 + 1;
    return static_cast<std::uint64_t>(static_cast<Wide>(number + 2) * factor >> 64);
}

// 128/125 of a mantissa, which three divisions come to without their roundings, as an integer and 64 bits of
// fraction. What is left out is less than a thousandth.
constexpr Wide without_roundings(std::uint64_t mantissa) {
    constexpr auto factor = static_cast<std::uint64_t>(((Wide{1} << 70) + 124) / 125);
    return static_cast<Wide>(mantissa << 1) * factor;
}
constexpr std::uint64_t integer_of(Wide number) {
    return static_cast<std::uint64_t>(number >> 64);
}
constexpr std::uint64_t fraction_byte(Wide number) {
    return static_cast<std::uint64_t>(number) >> 56;
}

// What the roundings add to the integer. They repeat with every 125 mantissas, as the fractions do, which lie
// two bytes apart at least.
constexpr auto roundings = [] {
    std::array<std::uint8_t, 256> all{};
    for (std::uint64_t mantissa = 0; mantissa < 125; ++mantissa) {
        const std::uint64_t rounded = fifth_of(4 * fifth_of(4 * fifth_of(8 * mantissa)));
        const Wide plain = without_roundings(mantissa);
        const std::uint64_t byte = fraction_byte(plain);
        all[byte] = all[byte + 1] = static_cast<std::uint8_t>(rounded - integer_of(plain));
    }
    return all;
}();

// Divides a finite number of at least 10 by 10 until it is less, and returns how often.
int divide_by_tens(double& number) {
    constexpr std::int32_t bias = 1023;
    const auto bits = std::bit_cast<std::uint64_t>(number);
    std::uint64_t mantissa = (bits & (leading_bit - 1)) | leading_bit;
    auto exponent = static_cast<std::int32_t>(bits >> 52) - bias;
    int count = 0;
    while (exponent > 3 || (exponent == 3 && mantissa >= mantissa_of_ten)) {
        if (mantissa >= mantissa_of_ten) {
            mantissa = fifth_of(4 * mantissa);
            exponent -= 3;
            ++count;
        } else if (exponent > 10) {
            const Wide plain = without_roundings(mantissa);
            mantissa = integer_of(plain) + roundings[fraction_byte(plain)];
            exponent -= 10;
            count += 3;
        } else {
            mantissa = fifth_of(8 * mantissa);
            exponent -= 4;
            ++count;
        }
    }
    const auto biased = static_cast<std::uint64_t>(std::int64_t{exponent} + bias);
    number = std::bit_cast<double>(biased << 52 | (mantissa & (leading_bit - 1)));
    return count;
}

// `digits` decimal digits of a number that is at least 1 and less than 10;
// a carry out of them raises `exponent`.
void write_mantissa(double number, int digits, int& exponent, std::span<char> text) {
    double integral = number * power_of_ten(digits - 1) + 0.5;
    std::size_t size = 0;
    if (digits <= 18) {
        auto integer = static_cast<std::uint64_t>(integral);
        if (integer >= static_cast<std::uint64_t>(power_of_ten(digits))) {
            integer /= 10;
            exponent++;
        }
        size = write_unsigned(integer, text);
    } else {
        // From 2^53 on a binary64 number is integral.
        if (integral >= power_of_ten(digits)) {
            integral /= 10;
            exponent++;
        }
        size = write_integral(integral, text);
    }
    // Beyond 22 digits the power of ten is itself rounded, and the number may come out one digit short.
    const auto wanted = static_cast<std::size_t>(digits);
    if (size < wanted) {
        std::copy_backward(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size),
                           text.begin() + digits);
        std::fill_n(text.begin(), wanted - size, '0');
    }
}

void put_exponent(TextWriter& out, char letter, int exponent) {
    out.put(letter);
    out.put(exponent < 0 ? '-' : '+');
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 100) out.put(static_cast<char>('0' + magnitude / 100));
    out.put(static_cast<char>('0' + magnitude / 10 % 10));
    out.put(static_cast<char>('0' + magnitude % 10));
}

// Significant digits (without trailing zeros) of the number d.ddd * 10^exponent in one of the three layouts.
void put_layout(TextWriter& out, std::span<const char> digits, int exponent, int precision, char letter) {
    const int count = static_cast<int>(digits.size());
    if (exponent < -4 || exponent > precision - 1) {
        out.put(digits[0]);
        if (count > 1) {
            out.put('.');
            out.put(digits.subspan(1));
        }
        put_exponent(out, letter, exponent);
    } else if (exponent < 0) {
        out.put('.');
        out.put('0', -exponent - 1);
        out.put(digits);
    } else {
        const int whole = std::min(count, exponent + 1);
        out.put(digits.first(static_cast<std::size_t>(whole)));
        out.put('0', exponent + 1 - whole);
        if (count > exponent + 1) {
            out.put('.');
            out.put(digits.subspan(static_cast<std::size_t>(whole)));
        }
    }
}

std::size_t copy_word(std::string_view word, std::span<char> text) {
    std::copy(word.begin(), word.end(), text.begin());
    return word.size();
}

// Integers of so few digits come out the same without normalization; there is a test for each of them.
bool is_small_integer(double number, std::int64_t& integer) {
    if (!(number > -1e6 && number < 1e6)) return false;
    integer = static_cast<std::int64_t>(number);
    return static_cast<double>(integer) == number;
}

}  // namespace

NumberText format_number(const Value& value) {
    NumberText text;
    const std::span<char> magnitude = std::span(text.characters).subspan(1);
    bool negative = false;
    std::size_t size = 0;
    std::int64_t integer = is_integer(value.type) ? value.integer : 0;
    if (is_integer(value.type) || is_small_integer(value.real, integer)) {
        negative = integer < 0;
        const auto bits = static_cast<std::uint64_t>(integer);
        size = write_unsigned(negative ? ~bits + 1 : bits, magnitude);
    } else {
        negative = value.real < 0;
        const bool single = value.type == Type::SINGLE;
        size = format_magnitude(negative ? -value.real : value.real, single ? single_digits : double_digits,
                                single ? 'E' : 'D', magnitude);
    }
    text.characters[0] = negative ? '-' : ' ';
    text.characters[size + 1] = ' ';
    text.size = static_cast<std::uint32_t>(size + 2);
    return text;
}

NumberText format_unsigned(std::uint64_t number) {
    NumberText text;
    text.size = static_cast<std::uint32_t>(write_unsigned(number, text.characters));
    return text;
}

int normalize(double& number) {
    if (number >= 10) return divide_by_tens(number);
    int exponent = 0;
    while (number < 1) {
        number *= 10;
        exponent--;
    }
    return exponent;
}

std::size_t format_magnitude(double magnitude, int digits, char exponent_letter, std::span<char> text) {
    if (magnitude != magnitude) return copy_word("NAN", text);
    if (__builtin_isinf(magnitude)) return copy_word("INF", text);
    if (magnitude == 0) return copy_word("0", text);

    std::array<char, integral_size> block;
    int exponent = normalize(magnitude);
    write_mantissa(magnitude, digits, exponent, block);
    std::size_t count = static_cast<std::size_t>(digits);
    while (count > 1 && block[count - 1] == '0')
        count--;
    TextWriter out(text);
    put_layout(out, std::span(block).first(count), exponent, digits, exponent_letter);
    return out.size();
}

std::size_t write_integral(double integral, std::span<char> text) {
    if (integral < two_to_63) return write_unsigned(static_cast<std::uint64_t>(integral), text);

    // mantissa * 2^exponent in limbs of nine decimal digits, the lowest first,
    // doubled up to 2^29 times at once.
    constexpr std::uint64_t limb_base = 1'000'000'000;
    const auto bits = std::bit_cast<std::uint64_t>(integral);
    std::uint64_t rest = (bits & ((std::uint64_t{1} << 52) - 1)) | std::uint64_t{1} << 52;
    auto exponent = static_cast<std::int32_t>(bits >> 52) - 1075;
    std::array<std::uint32_t, 36> limbs;
    std::size_t size = 0;
    for (; rest != 0; rest /= limb_base)
        limbs[size++] = static_cast<std::uint32_t>(rest % limb_base);
    while (exponent > 0) {
        const std::int32_t step = std::min(exponent, 29);
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < size; i++) {
            carry += static_cast<std::uint64_t>(limbs[i]) << step;
            limbs[i] = static_cast<std::uint32_t>(carry % limb_base);
            carry /= limb_base;
        }
        if (carry != 0) limbs[size++] = static_cast<std::uint32_t>(carry);
        exponent -= step;
    }
    std::size_t written = write_unsigned(limbs[size - 1], text);
    for (std::size_t i = size - 1; i-- > 0;) {
        std::uint32_t limb = limbs[i];
        for (std::size_t digit = 9; digit-- > 0; limb /= 10)
            text[written + digit] = static_cast<char>('0' + limb % 10);
        written += 9;
    }
    return written;
}

}  // namespace korvane
