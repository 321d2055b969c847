#include "unicode.h"

#include <cstdint>

#include "code_page.h"

namespace korvane::host {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool is_high_surrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool is_low_surrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

}  // namespace

std::optional<char32_t> decode_utf8(std::string_view utf8, std::size_t& position) {
    const auto first = static_cast<std::uint8_t>(utf8[position++]);
    if (first < 0x80) return first;
    std::size_t following = 0;
    char32_t value = 0;
    if (first >= 0xC2 && first < 0xE0) {
        following = 1;
        value = first & 0x1F;
    } else if (first >= 0xE0 && first < 0xF0) {
        following = 2;
        value = first & 0x0F;
    } else if (first >= 0xF0 && first < 0xF5) {
        following = 3;
        value = first & 0x07;
    } else {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < following; ++i) {
        if (position >= utf8.size()) return std::nullopt;
        const auto byte = static_cast<std::uint8_t>(utf8[position++]);
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        value = value << 6 | (byte & 0x3F);
    }
    const bool overlong = (following == 2 && value < 0x800) || (following == 3 && value < 0x10000);
    if (overlong || value > 0x10FFFF || is_high_surrogate(value) || is_low_surrogate(value))
        return std::nullopt;
    return value;
}

std::string to_utf8(std::u16string_view text) {
    std::string utf8;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (is_high_surrogate(character) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            character = 0x10000 + ((character - 0xD800) << 10) + (text[i + 1] - 0xDC00U);
            ++i;
        } else if (is_high_surrogate(character) || is_low_surrogate(character)) {
            character = replacement;
        }
        append_utf8(utf8, character);
    }
    return utf8;
}

std::optional<std::u16string> to_utf16(std::string_view utf8) {
    std::u16string text;
    for (std::size_t position = 0; position < utf8.size();) {
        const auto character = decode_utf8(utf8, position);
        if (!character) return std::nullopt;
        if (*character < 0x10000) {
            text += static_cast<char16_t>(*character);
        } else {
            text += static_cast<char16_t>(0xD800 + ((*character - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((*character - 0x10000) & 0x3FF));
        }
    }
    return text;
}

}  // namespace korvane::host
