// How strongly the binary operators bind. All of them are left-associative: a right operand is taken one
// level tighter.
#pragma once

#include <array>
#include <cstdint>

#include "program/keywords.h"

namespace korvane {

inline constexpr int weakest_strength = 1;
inline constexpr int relational_strength = 60;

// By token kind; 0 for tokens that are no binary operators.
inline constexpr std::array<std::uint8_t, 256> operator_strengths = [] {
    std::array<std::uint8_t, 256> table{};
    table['*'] = table['/'] = 100;
    table['\\'] = 90;
    table[KW_MOD] = 80;
    table['+'] = table['-'] = 70;
    table['='] = table['<'] = table['>'] = relational_strength;
    table[KW_AND] = 50;
    table[KW_OR] = 40;
    table[KW_XOR] = 30;
    table[KW_EQV] = 20;
    table[KW_IMP] = 10;
    return table;
}();

}  // namespace korvane
