#include "code_page.h"

#include <algorithm>
#include <string_view>

namespace korvane::host {
namespace {

constexpr std::u32string_view low_graphics = U" ☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼";

constexpr std::u32string_view high_half =
    U"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»"
    U"░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
    U"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■ ";

static_assert(low_graphics.size() == 32);
static_assert(high_half.size() == 128);

constexpr std::uint8_t house = 127;
constexpr char32_t house_character = U'⌂';

}  // namespace

char32_t code_to_unicode(std::uint8_t code) {
    if (code < low_graphics.size()) return low_graphics[code];
    if (code == house) return house_character;
    return code < 128 ? code : high_half[code - 128U];
}

std::optional<std::uint8_t> unicode_to_code(char32_t character) {
    if (character >= 32 && character < house) return static_cast<std::uint8_t>(character);
    if (character == house_character) return house;
    if (character == U'\u00a0')  // no-break space
        return std::uint8_t{32};
    if (character < 128) return std::nullopt;
    if (const auto at = high_half.find(character); at != high_half.npos)
        return static_cast<std::uint8_t>(128 + at);
    if (const auto at = low_graphics.find(character); at != low_graphics.npos)
        return static_cast<std::uint8_t>(at);
    return std::nullopt;
}

void append_utf8(std::string& text, char32_t character) {
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        put(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
        put(0x80 | (character >> 6 & 0x3F));
        put(0x80 | (character & 0x3F));
    }
}

}  // namespace korvane::host
