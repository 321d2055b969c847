#include "host_text.h"

#include "code_page.h"

namespace korvane::host {
namespace {

constexpr char32_t no_break_space = U'\u00a0';
constexpr unsigned char code_of_no_break_space = 255;

// The number of bytes of the sequence that a byte begins, 0 when it begins none.
std::size_t sequence_length(unsigned char byte) {
    if (byte < 0x80) return 1;
    if (byte >= 0xC2 && byte <= 0xDF) return 2;
    if (byte >= 0xE0 && byte <= 0xEF) return 3;
    return byte >= 0xF0 && byte <= 0xF4 ? 4 : 0;
}

bool is_overlong_or_surrogate(char32_t character, std::size_t bytes) {
    if (bytes == 3 && character < 0x800) return true;
    if (bytes == 4 && (character < 0x10000 || character > 0x10FFFF)) return true;
    return character >= 0xD800 && character <= 0xDFFF;
}

bool is_ascii(char32_t character) {
    return character < 128;
}

}  // namespace

HostCharacter first_character(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = sequence_length(lead);
    if (length == 1) return {lead, 1, true};
    char32_t character = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i == text.size()) return {0, 0, false};
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80) return {0, 1, false};
        character = character << 6 | (byte & 0x3FU);
    }
    if (length == 0 || is_overlong_or_surrogate(character, length)) return {0, 1, false};
    return {character, length, true};
}

unsigned char to_code(const HostCharacter& character) {
    if (!character.is_valid) return '?';
    if (is_ascii(character.character)) return static_cast<unsigned char>(character.character);
    if (character.character == no_break_space) return code_of_no_break_space;
    const unsigned char code = unicode_to_code(character.character).value_or('?');
    // The two looks whose codes end lines.
    return code == '\n' || code == '\r' ? '?' : code;
}

std::string to_host_text(std::string_view codes) {
    std::string text;
    for (const char byte : codes) {
        const auto code = static_cast<unsigned char>(byte);
        if (code == '\n' || code == '\r' || code == '\t')
            text += byte;
        else if (code == code_of_no_break_space)
            append_utf8(text, no_break_space);
        else
            append_utf8(text, code_to_unicode(code));
    }
    return text;
}

}  // namespace korvane::host
