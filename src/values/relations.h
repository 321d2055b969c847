// The relational operators, each as the set of the outcomes of a comparison for which it is true.
#pragma once

#include <cstdint>

namespace korvane {

enum Outcome : std::uint8_t { LESS = 1, EQUAL = 2, GREATER = 4 };

// Reads "=", "<", "<=", "<>", ">" or ">=", which may be two tokens; "=<", "=>" and "><" are no operators.
template <typename AnyToken>
constexpr std::uint8_t read_relation(AnyToken*& at) {
    const auto first = (at++)->kind;
    if (first == '=') return EQUAL;
    const std::uint8_t strictly = first == '<' ? LESS : GREATER;
    if (at->kind == '=') {
        ++at;
        return strictly | EQUAL;
    }
    if (first != '<' || at->kind != '>') return strictly;
    ++at;
    return LESS | GREATER;
}

}  // namespace korvane
