#include "explorer/number_syntax.h"

#include <limits>

namespace korvane {
namespace {

constexpr unsigned no_digit = 16;  // not below any base

constexpr char upper_case(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

constexpr unsigned digit_value(char character) {
    const char upper = upper_case(character);
    if (upper >= '0' && upper <= '9') return static_cast<unsigned>(upper - '0');
    if (upper >= 'A' && upper <= 'F') return static_cast<unsigned>(upper - 'A' + 10);
    return no_digit;
}

bool skip_prefix(std::string_view& word, char first, char second) {
    if (word.size() < 2 || upper_case(word[0]) != first || upper_case(word[1]) != second) return false;
    word.remove_prefix(2);
    return true;
}

std::optional<std::uint64_t> parse_digits(std::string_view digits, unsigned base) {
    constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t value = 0;
    for (const char character : digits) {
        const unsigned digit = digit_value(character);
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
