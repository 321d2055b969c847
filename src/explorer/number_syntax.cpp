#include "explorer/number_syntax.h"

#include <limits>

#include "numbers/prefixed_number.h"
#include "platform/characters.h"

namespace korvane {
namespace {

bool skip_prefix(std::string_view& word, char first, char second) {
    if (word.size() < 2 || fold_to_upper(word[0]) != first || fold_to_upper(word[1]) != second) return false;
    word.remove_prefix(2);
    return true;
}

std::optional<std::uint64_t> parse_digits(std::string_view digits, unsigned base) {
    constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t value = 0;
    for (const char character : digits) {
        const std::uint32_t digit = digit_value(character);
        if (digit >= base || value > (largest - digit) / base) return std::nullopt;
        value = value * base + digit;
    }
    if (digits.empty()) return std::nullopt;
    return value;
}

}  // namespace

std::optional<std::uint64_t> parse_number(std::string_view word) {
    if (skip_prefix(word, '&', 'H') || skip_prefix(word, '0', 'X')) return parse_digits(word, 16);
    if (skip_prefix(word, 'D', ':')) return parse_digits(word, 10);
    return parse_digits(word, 16);
}

std::optional<std::uint8_t> parse_byte(std::string_view word) {
    const auto value = parse_number(word);
    if (!value || *value > 255) return std::nullopt;
    return static_cast<std::uint8_t>(*value);
}

}  // namespace korvane
