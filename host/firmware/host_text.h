// Text of the host, which is UTF-8, and text of the interpreter, which is code page 437.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvane::host {

// The character that a text in UTF-8 begins with.
struct HostCharacter {
    char32_t character;
    std::size_t bytes;  // that it takes; 0 when only a part of it is there
    bool is_valid;      // false: the first byte begins no character
};

// `text` must not be empty.
HostCharacter first_character(std::string_view text);

// The code of a host's character: control characters, which are the same in both, and those of the code page
// by their look. Nothing that the code page has becomes '?'. No-break space is code 255.
unsigned char to_code(const HostCharacter& character);

// The text of the interpreter as UTF-8: line ends and tabs as they are, the other control
// codes by their look.
std::string to_host_text(std::string_view codes);

}  // namespace korvane::host
