// Classes of characters in program text. They take any character type; a byte of a plain char above 127
// belongs to none of them.
#pragma once

#include <cstdint>

namespace korvane {

// A blank or a tab.
constexpr bool is_blank(std::uint32_t character) {
    return character == ' ' || character == '\t';
}

constexpr bool is_digit(std::uint32_t character) {
    return character >= '0' && character <= '9';
}

constexpr bool is_upper_letter(std::uint32_t character) {
    return character >= 'A' && character <= 'Z';
}

constexpr bool is_letter(std::uint32_t character) {
    return is_upper_letter(character) || (character >= 'a' && character <= 'z');
}

// A letter A to Z of either case as the upper-case one; any other character as it is.
constexpr char fold_to_upper(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

}  // namespace korvane
