#include "explorer/line_text.h"

#include <charconv>

#include "platform/characters.h"

namespace korvane {

LineText& LineText::put(char character) {
    if (length_ < capacity) text_[length_++] = character;
    return *this;
}

LineText& LineText::put(std::string_view text) {
    for (const char character : text)
        put(character);
    return *this;
}

LineText& LineText::put(const char* text) {
    return put(std::string_view(text));
}

LineText& LineText::put_hex(std::uint64_t value, unsigned digits) {
    for (unsigned digit = digits; digit-- > 0;)
        put(hex_digit(value >> (4 * digit)));
    return *this;
}

LineText& LineText::put_decimal(std::uint64_t value, unsigned width) {
    std::array<char, 20> digits;  // 2^64 - 1 has 20
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    for (std::size_t column = text.size(); column < width; ++column)
        put(' ');
    return put(text);
}

LineText& LineText::put_signed(std::int64_t value) {
    // Negated as unsigned, so that the most negative value has its magnitude too.
    if (value < 0) return put('-').put_decimal(0 - static_cast<std::uint64_t>(value));
    return put_decimal(static_cast<std::uint64_t>(value));
}

LineText& LineText::put_utf16(char16_t unit) {
    const auto byte = static_cast<std::uint8_t>(unit);
    return put(byte == 0 || byte == '\r' ? '.' : static_cast<char>(byte));
}

LineText& LineText::tab_to(std::size_t column) {
    do {
        put(' ');
    } while (length_ < column && length_ < capacity);
    return *this;
}

}  // namespace korvane
