// Code page 437, the character set of the console, in Unicode terms.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korvane::host {

// The Unicode character that looks like a console character. Codes 0, 32 and 255 are blanks; 1 to 31 and 127
// are the graphic characters that the code page has there (smileys, card suits, arrows),
// not control characters.
char32_t code_to_unicode(std::uint8_t code);

// The console code of a Unicode character: ASCII as it is, others by their look; nothing when code page 437
// has no such character. Control characters have none.
std::optional<std::uint8_t> unicode_to_code(char32_t character);

// Appends a character in UTF-8.
void append_utf8(std::string& text, char32_t character);

}  // namespace korvane::host
