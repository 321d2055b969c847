#include "numbers/prefixed_number.h"

#include "platform/characters.h"

namespace korvane {

std::uint32_t digit_value(char character) {
    if (is_digit(character)) return static_cast<std::uint32_t>(character - '0');
    const char upper = fold_to_upper(character);
    if (upper >= 'A' && upper <= 'F') return static_cast<std::uint32_t>(upper - 'A' + 10);
    return 255;
}

PrefixedNumber scan_prefixed(std::string_view text) {
    if (text.size() < 3 || text[0] != '&') return {};
    const char letter = fold_to_upper(text[1]);
    if (letter != 'H' && letter != 'O') return {};
    const std::uint32_t bits_per_digit = letter == 'H' ? 4 : 3;

    PrefixedNumber number{};
    std::size_t position = 2;
    for (; position < text.size(); position++) {
        const std::uint32_t digit = digit_value(text[position]);
        if (digit >= 1u << bits_per_digit) break;
        number.too_large = number.too_large || number.bits >> (64 - bits_per_digit) != 0;
        number.bits = number.bits << bits_per_digit | digit;
    }
    if (position > 2) number.length = position;
    return number;
}

Value narrowest_of_bits(std::uint64_t bits) {
    const auto integer = static_cast<std::int64_t>(bits);
    if (bits < 32768) return Value::of_integer(integer, Type::INTEGER);
    if (bits < 2147483648) return Value::of_integer(integer, Type::LONG);
    return Value::of_integer(integer, Type::INT64);
}

}  // namespace korvane
