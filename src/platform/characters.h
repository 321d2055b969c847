// Classes of characters in program text. They take any character type; a byte of a plain char above 127
// belongs to none of them.
#pragma once

#include <cstdint>

namespace korvane {

// A blank or a tab.
constexpr bool is_blank(std::uint32_t character) {
    return character == ' ' || character == '\t';
}

// CR or LF; the two together are one line end.
constexpr bool is_line_break(std::uint32_t character) {
    return character == '\r' || character == '\n';
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
template <typename Character>
constexpr Character fold_to_upper(Character character) {
    return character >= 'a' && character <= 'z' ? static_cast<Character>(character - 'a' + 'A') : character;
}

// The digit of the lowest four bits of a number.
constexpr char hex_digit(std::uint64_t number) {
    return "0123456789ABCDEF"[number & 15];
}

}  // namespace korvane
