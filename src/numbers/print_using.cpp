#include "numbers/print_using.h"

#include <algorithm>
#include <span>

#include "numbers/decimal.h"
#include "numbers/format.h"
#include "numbers/rounding.h"
#include "numbers/text_writer.h"

namespace korvane {
namespace {

constexpr double infinity = __builtin_huge_val();

// The character at a position, or a zero past the end, which belongs to no field.
char at(std::string_view format, std::size_t position) {
    return position < format.size() ? format[position] : '\0';
}

bool starts_number(std::string_view format, std::size_t position) {
    const char first = at(format, position);
    const char second = at(format, position + 1);
    if (first == '+') return second == '#' || second == '$' || second == '*' || second == '.';
    return first == '#' || first == '.' || ((first == '$' || first == '*') && second == first);
}

// The part of a field before its digits.
void scan_prefix(std::string_view format, std::size_t& position, NumericField& field) {
    if (at(format, position) == '+') {
        field.leading_plus = true;
        position++;
    }
    const char first = at(format, position);
    if ((first != '$' && first != '*') || at(format, position + 1) != first) return;
    field.dollar = first == '$';
    field.star_fill = first == '*';
    field.extra_width = field.dollar ? 1 : 2;
    position += 2;
}

void scan_digits(std::string_view format, std::size_t& position, NumericField& field) {
    for (;; position++) {
        switch (at(format, position)) {
            case '#':
                (field.point ? field.digits_after : field.digits_before)++;
                break;
            case ',':
                field.comma = true;
                break;
            case '.':
                field.point = true;
                break;
            default:
                return;
        }
    }
}

NumericField scan_number(std::string_view format, std::size_t& position) {
    NumericField field{};
    scan_prefix(format, position, field);
    scan_digits(format, position, field);
    for (; at(format, position) == '^'; position++)
        field.exponent = true;
    const char sign = at(format, position);
    if (sign == '+' || sign == '-') {
        field.trailing_sign = true;
        if (sign == '+') field.leading_plus = false;
        position++;
    }
    return field;
}

UsingItem literal(char character) {
    return {UsingKind::literal, character, 0, {}};
}
UsingItem string_field(UsingKind kind, std::uint32_t width) {
    return {kind, 0, width, {}};
}

UsingItem scan_fixed_string(std::string_view format, std::size_t& position) {
    std::uint32_t width = 2;
    for (position++; at(format, position) == ' '; position++)
        width++;
    if (at(format, position) == '\\') position++;
    return string_field(UsingKind::fixed_string, width);
}

// '-' for a negative number, else '+' when asked for, else 0.
char sign_of(double number, bool plus) {
    if (number < 0) return '-';
    return plus ? '+' : '\0';
}

// The magnitude rounded to a count of digits after the point.
double round_magnitude(double magnitude, std::int32_t digits) {
    const double scale = power_of_ten(digits);
    const double scaled = magnitude * scale;
    // A number that large has no digits after the point.
    if (scaled == infinity) return magnitude;
    return truncated(scaled + 0.5) / scale;
}

// Digits of the whole part with a comma before each group of three when asked for.
void put_whole(TextWriter& out, std::span<const char> digits, bool comma) {
    for (std::size_t i = 0; i < digits.size(); i++) {
        if (comma && i != 0 && (digits.size() - i) % 3 == 0) out.put(',');
        out.put(digits[i]);
    }
}

// Digits of a fraction, one after the other. The small addend of each step is part of the language: it makes
// up for fractions that binary64 holds a little too small, and shows in the digits of some that it does not.
void put_fraction(TextWriter& out, double fraction, std::int32_t digits) {
    for (std::int32_t i = 0; i < digits; i++) {
        const double scaled = fraction * 10;
        // After a digit that the addend raised, the rest is negative and grows; its digits are zeros.
        const auto digit = std::clamp(static_cast<std::int32_t>(std::max(scaled, -1.0) + 0.000000001), 0, 9);
        out.put(static_cast<char>('0' + digit));
        fraction = scaled - digit;
    }
}

}  // namespace

UsingItem next_using_item(std::string_view format, std::size_t& position) {
    format = format.substr(0, using_format_limit);
    if (position >= format.size()) return {UsingKind::end, 0, 0, {}};
    if (starts_number(format, position)) return {UsingKind::number, 0, 0, scan_number(format, position)};
    switch (const char character = format[position]) {
        case '\\':
            return scan_fixed_string(format, position);
        case '!':
            position++;
            return string_field(UsingKind::first_byte, 0);
        case '&':
            position++;
            return string_field(UsingKind::whole_string, 0);
        case '_':
            if (position + 1 < format.size()) position++;
            return literal(format[position++]);
        default:
            position++;
            return literal(character);
    }
}

namespace {

void put_field(TextWriter& out, double number, const NumericField& field) {
    const char sign = sign_of(number, field.leading_plus);
    const double magnitude = number < 0 ? -number : number;
    if (field.exponent) {
        if (sign != 0) out.put(sign);
        out.take_written(format_magnitude(magnitude, field.digits_after + 1, 'E', out.room()));
        return;
    }

    const bool finite = magnitude < infinity;
    std::array<char, integral_size> whole;
    const double rounded = finite ? round_magnitude(magnitude, field.digits_after) : magnitude;
    const std::size_t whole_size =
        finite ? write_integral(truncated(rounded), whole) : format_magnitude(magnitude, 1, 'E', whole);
    const auto whole_digits = static_cast<std::int32_t>(whole_size);
    const std::int32_t decimals = finite ? (field.point ? 1 : 0) + field.digits_after : 0;
    const std::int32_t commas = finite && field.comma ? (whole_digits - 1) / 3 : 0;
    const std::int32_t body = whole_digits + commas + decimals;

    const std::int32_t width = field.digits_before + (field.point ? 1 : 0) + field.digits_after;
    const std::int32_t padding =
        static_cast<std::int32_t>(field.extra_width) - (field.dollar ? 1 : 0) - body + width;
    if (padding < 0) out.put('%');
    out.put(field.star_fill ? '*' : ' ', padding);
    if (field.dollar) out.put('$');
    if (sign != 0 && !field.trailing_sign) out.put(sign);
    put_whole(out, std::span(whole).first(whole_size), commas != 0);
    if (finite && field.point) out.put('.');
    if (finite) put_fraction(out, rounded - truncated(rounded), field.digits_after);
    if (field.trailing_sign) out.put(number < 0 ? '-' : '+');
}

}  // namespace

void format_field(double number, const NumericField& field, FieldText& text) {
    TextWriter out(text.characters);
    put_field(out, number, field);
    text.size = static_cast<std::uint32_t>(out.size());
}

}  // namespace korvane
