#include "values/text_number.h"

#include "numbers/decimal.h"
#include "numbers/prefixed_number.h"
#include "platform/characters.h"

namespace korvane {
namespace {

constexpr std::uint64_t int64_magnitude = std::uint64_t{1} << 63;

void skip_blanks(std::string_view& text) {
    while (!text.empty() && is_blank(text.front()))
        text.remove_prefix(1);
}

void trim_blanks(std::string_view& text) {
    skip_blanks(text);
    while (!text.empty() && is_blank(text.back()))
        text.remove_suffix(1);
}

// Takes a sign off the front; true for "-".
bool take_sign(std::string_view& text) {
    if (text.empty() || (text.front() != '+' && text.front() != '-')) return false;
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

// Decimal digits that end the text; a magnitude of 2^64 or more is marked as too large.
PrefixedNumber scan_whole(std::string_view text) {
    PrefixedNumber number{};
    for (; number.length < text.size() && is_digit(text[number.length]); number.length++) {
        const auto digit = static_cast<std::uint64_t>(text[number.length] - '0');
        number.too_large = number.too_large || __builtin_mul_overflow(number.bits, 10, &number.bits) ||
                           __builtin_add_overflow(number.bits, digit, &number.bits);
    }
    return number;
}

// The bits of the negated integer, which wrap for the most negative one.
std::int64_t negate(std::uint64_t bits) {
    return static_cast<std::int64_t>(~bits + 1);
}

}  // namespace

NumberReading text_to_integer(std::string_view text, std::int64_t& integer) {
    trim_blanks(text);
    if (text.empty()) {
        integer = 0;
        return NumberReading::number;
    }
    const bool negative = take_sign(text);
    const bool prefixed = !text.empty() && text.front() == '&';
    const PrefixedNumber number = prefixed ? scan_prefixed(text) : scan_whole(text);
    if (number.length == 0 || number.length != text.size()) return NumberReading::not_a_number;
    const std::uint64_t limit = negative ? int64_magnitude : int64_magnitude - 1;
    if (number.too_large || number.bits > limit) return NumberReading::too_large;
    integer = negative ? negate(number.bits) : static_cast<std::int64_t>(number.bits);
    return NumberReading::number;
}

NumberReading text_to_double(std::string_view text, double& number) {
    trim_blanks(text);
    if (text.empty()) {
        number = 0;
        return NumberReading::number;
    }
    const bool negative = take_sign(text);
    double magnitude = 0;
    if (!text.empty() && text.front() == '&') {
        const PrefixedNumber prefixed = scan_prefixed(text);
        if (prefixed.length == 0 || prefixed.length != text.size()) return NumberReading::not_a_number;
        if (prefixed.too_large) return NumberReading::too_large;
        magnitude = static_cast<double>(static_cast<std::int64_t>(prefixed.bits));
    } else {
        const bool single = !text.empty() && text.back() == '!';
        if (single || (!text.empty() && text.back() == '#')) text.remove_suffix(1);
        const LeadingNumber leading = leading_decimal(text);
        if (text.empty() || leading.length != text.size()) return NumberReading::not_a_number;
        magnitude = single ? decimal_to_single(text) : leading.number;
        if (__builtin_isinf(magnitude)) return NumberReading::too_large;
    }
    number = negative && magnitude != 0 ? -magnitude : magnitude;
    return NumberReading::number;
}

NumberReading text_to_number(std::string_view text, Value& number) {
    std::int64_t integer = 0;
    const NumberReading as_integer = text_to_integer(text, integer);
    if (as_integer != NumberReading::not_a_number) {
        number = Value::of_integer(integer);
        return as_integer;
    }
    double real = 0;
    const NumberReading as_real = text_to_double(text, real);
    number = Value::of_real(real);
    return as_real;
}

namespace {

constexpr Value too_large = Value::of_integer(0, Type::NONE);

// What begins with "&", behind its sign.
[[gnu::cold]] Value longest_prefixed(std::string_view text, bool negative) {
    const PrefixedNumber prefixed = scan_prefixed(text);
    if (prefixed.length == 0) return Value::of_real(0);
    if (prefixed.too_large) return too_large;
    Value value = narrowest_of_bits(prefixed.bits);
    if (negative) value.integer = negate(prefixed.bits);
    return value;
}

}  // namespace

Value longest_number(std::string_view text) {
    skip_blanks(text);
    const bool negative = take_sign(text);
    if (!text.empty() && text.front() == '&') return longest_prefixed(text, negative);
    const double magnitude = leading_decimal(text).number;
    if (__builtin_isinf(magnitude)) return too_large;
    return Value::of_real(negative && magnitude != 0 ? -magnitude : magnitude);
}

}  // namespace korvane
