// How the help's texts are kept short: pieces that occur often stand as one byte each.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvane {

// The bytes from here on stand for fragments, all lower ones for themselves.
inline constexpr std::uint8_t first_fragment_code = 0x80;

// Of two characters or more, in ascending order. They keep the texts and themselves together short; a text
// that is changed need not be minded here.
// clang-format off
inline constexpr std::array<const char*, 128> text_fragments = {
    " - ", " - names b", " [", " a", " a ", " address", " address,value", " and ", " b", " byte", " f",
    " file", " from", " in", " l", " letter[-letter][,...]", " memory", " n", " of", " or ", " p", " pr",
    " s", " statements|li", " the ", " the scre", " to ", " variabl", " w", "#]n", "#n,][\"prompt\"", "$ - ",
    "(s$", "(x) - ", "(x1,y1)-(x2,y2)", ") - ", ", ", "- ", "...]", "4-bit addre", "; ", "AS", "CII ", "DEF",
    "EN", "ER", "FOR ", "GOSUB", "IN", "KORVANE", "LE", "LO", "ON ", "OPEN file$ ", "PUT", "RE", "ST",
    "STEP](x", "TIMER(n)", "[,", "] - ", "] - draw a ", "] - l", "] | ", "][,", "ad", "address", "al", "and",
    "ar", "array", "at", "bitwise ", "byte", "character", "co", "conditio", "e ", "ed", "eginning so are ",
    "en", "ent", "er", "es", "file", "from", "ign", "im", "in", "ine", "ine ", "int", "ion", "it", "la", "le",
    "li", "lo", "lumn", "mber", "n ", "n) - ", "ne", "ng", "number", "ogram ", "or", "ou", "ow", "program",
    "ra", "re", "ri", "s ", "se", "st", "st ", "start", "string", "t ", "te", "te ", "th", "to", "tring",
    "ur", "value", "var",
};
// clang-format on

// For each ASCII character the number of the first fragment that begins with it or with a higher one.
inline constexpr auto fragments_from = [] {
    std::array<std::uint8_t, 128> first{};
    std::size_t number = 0;
    for (std::size_t character = 0; character < first.size(); ++character) {
        while (number < text_fragments.size() &&
               static_cast<std::uint8_t>(text_fragments[number][0]) < character)
            ++number;
        first[character] = static_cast<std::uint8_t>(number);
    }
    return first;
}();
static_assert(std::ranges::is_sorted(text_fragments, {},
                                     [](const char* text) { return std::string_view(text); }));

// Calls put(byte) for each byte of the packed form of an ASCII text: the longest fragment where one fits,
// else the character.
template <typename Put>
constexpr void pack_text(std::string_view text, Put put) {
    for (std::size_t at = 0; at < text.size();) {
        const char first = text[at];
        const char second = at + 1 < text.size() ? text[at + 1] : char{0};
        std::size_t longest = 1;
        auto byte = static_cast<std::uint8_t>(first);
        for (std::size_t i = fragments_from[byte]; i < text_fragments.size(); ++i) {
            const char* fragment = text_fragments[i];
            if (fragment[0] != first) break;
            if (fragment[1] != second) continue;
            std::size_t length = 2;
            while (fragment[length] != 0 && at + length < text.size() &&
                   fragment[length] == text[at + length])
                ++length;
            if (fragment[length] != 0 || length < longest) continue;
            longest = length;
            byte = static_cast<std::uint8_t>(first_fragment_code + i);
        }
        put(byte);
        at += longest;
    }
}

// Unpacks a zero-terminated text, moves `packed` behind it, and gives its length. The place must have room
// for it.
std::size_t unpack_text(const char*& packed, char* place);

}  // namespace korvane
