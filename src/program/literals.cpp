#include "program/literals.h"

#include <string_view>

#include "numbers/decimal.h"
#include "numbers/prefixed_number.h"
#include "platform/characters.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {
namespace {

// A type suffix and its length; NONE and 0 where there is none.
struct Suffix {
    Type type;
    std::size_t length;
};

Suffix scan_suffix(const std::uint8_t* text) {
    switch (text[0]) {
        case '%':
            return {Type::INTEGER, 1};
        case '&':
            return text[1] == '&' ? Suffix{Type::INT64, 2} : Suffix{Type::LONG, 1};
        case '!':
            return {Type::SINGLE, 1};
        case '#':
            return {Type::DOUBLE, 1};
        default:
            return {Type::NONE, 0};
    }
}

bool fail(const char* error_message) {
    raise(error_message);
    return false;
}

// Decimal digits only, as a number below 2^63; false when there are too many.
bool read_whole(std::string_view digits, std::int64_t& whole) {
    std::int64_t number = 0;
    for (const char digit : digits)
        if (__builtin_mul_overflow(number, 10, &number) ||
            __builtin_add_overflow(number, digit - '0', &number))
            return false;
    whole = number;
    return true;
}

// A literal with a suffix of the integer types.
bool read_integer(std::string_view number, const DecimalShape& shape, Type type, Value& value) {
    if (shape.point || shape.exponent_letter != 0) return fail(message::syntax_error);
    std::int64_t whole = 0;
    if (!read_whole(number, whole) || !holds(type, whole)) return fail(message::overflow);
    value = Value::of_integer(whole, type);
    return true;
}

bool read_floating(std::string_view number, Type type, Value& value) {
    const double real = type == Type::SINGLE ? decimal_to_single(number) : decimal_to_double(number);
    if (__builtin_isinf(real)) return fail(message::overflow);
    value = Value::of_real(real, type);
    return true;
}

bool read_without_suffix(std::string_view number, const DecimalShape& shape, Value& value) {
    std::int64_t whole = 0;
    if (!shape.point && shape.exponent_letter == 0 && read_whole(number, whole) &&
        holds(Type::INTEGER, whole)) {
        value = Value::of_integer(whole, Type::INTEGER);
        return true;
    }
    constexpr std::size_t double_digits = 8;
    if (shape.exponent_letter == 'D' || shape.digits >= double_digits)
        return read_floating(number, Type::DOUBLE, value);
    const double single = decimal_to_single(number);
    if (__builtin_isinf(single) || (single == 0 && decimal_to_double(number) != 0))
        return read_floating(number, Type::DOUBLE, value);
    value = Value::of_real(single, Type::SINGLE);
    return true;
}

// The part of a zero-terminated text that can belong to a decimal number.
std::string_view decimal_extent(const std::uint8_t* text) {
    const auto* start = reinterpret_cast<const char*>(text);
    std::size_t length = 0;
    while (true) {
        const char character = fold_to_upper(start[length]);
        const bool sign = character == '+' || character == '-';
        const bool letter = character == 'E' || character == 'D';
        if (!is_digit(character) && character != '.' && !sign && !letter) return {start, length};
        length++;
    }
}

struct DecimalLiteral {
    std::string_view number;  // without its suffix
    DecimalShape shape;
    Suffix suffix;
};

DecimalLiteral scan_decimal_literal(const std::uint8_t* text) {
    const std::string_view extent = decimal_extent(text);
    const DecimalShape shape = scan_decimal(extent);
    return {extent.substr(0, shape.length), shape, scan_suffix(text + shape.length)};
}

bool read_decimal(const std::uint8_t*& text, Value& value) {
    const DecimalLiteral literal = scan_decimal_literal(text);
    const Suffix suffix = literal.suffix;
    text += literal.number.size() + suffix.length;
    if (is_integer(suffix.type)) return read_integer(literal.number, literal.shape, suffix.type, value);
    if (is_floating(suffix.type)) return read_floating(literal.number, suffix.type, value);
    return read_without_suffix(literal.number, literal.shape, value);
}

// A hexadecimal or octal literal, whose suffix is one of the integer types' or none.
struct PrefixedLiteral {
    PrefixedNumber number;
    Suffix suffix;
};

PrefixedLiteral scan_prefixed_literal(const std::uint8_t* text) {
    std::size_t length = 2;
    while (digit_value(static_cast<char>(text[length])) < 16)
        length++;
    const PrefixedNumber number = scan_prefixed({reinterpret_cast<const char*>(text), length});
    const Suffix suffix = scan_suffix(text + number.length);
    return {number, is_integer(suffix.type) ? suffix : Suffix{Type::NONE, 0}};
}

bool read_prefixed(const std::uint8_t*& text, Value& value) {
    const PrefixedLiteral literal = scan_prefixed_literal(text);
    const PrefixedNumber& number = literal.number;
    if (number.length == 0) return fail(message::syntax_error);
    if (number.too_large) return fail(message::overflow);
    text += number.length + literal.suffix.length;
    value = literal.suffix.length == 0
                ? narrowest_of_bits(number.bits)
                : Value::of_integer(static_cast<std::int64_t>(number.bits), literal.suffix.type);
    return true;
}

constexpr bool is_letter_of_base(std::uint8_t character) {
    const char letter = fold_to_upper(static_cast<char>(character));
    return letter == 'H' || letter == 'O';
}

}  // namespace

bool begins_literal(const std::uint8_t* text) {
    if (text[0] == '&') return is_letter_of_base(text[1]);
    return is_digit(text[0]) || (text[0] == '.' && is_digit(text[1]));
}

std::size_t literal_length(const std::uint8_t* text) {
    if (text[0] != '&') {
        const DecimalLiteral literal = scan_decimal_literal(text);
        return literal.number.size() + literal.suffix.length;
    }
    constexpr std::size_t prefix = 2;
    const PrefixedLiteral literal = scan_prefixed_literal(text);
    return literal.number.length == 0 ? prefix : literal.number.length + literal.suffix.length;
}

bool read_literal(const std::uint8_t*& text, Value& value) {
    return text[0] == '&' ? read_prefixed(text, value) : read_decimal(text, value);
}

}  // namespace korvane
