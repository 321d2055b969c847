// Places to be written: scalars and array elements, found when the statement is looked at.
#pragma once

#include "fast/element_steps.h"
#include "program/token.h"

namespace korvane::fast {

// Binds the place whose name is at `at` to the record in front of it, and moves `at` behind the place. That
// record, the host, keeps the storage of a scalar or the bracket of an element in left_operand, the type in
// left_kind, and in right_kind whether it is an element. False when the general handler has something to say
// about the place, or a new variable to create.
bool bind_place(Token* host, Token*& at);

inline Type place_type(const Token* host) {
    return static_cast<Type>(host->left_kind);
}
inline bool is_element(const Token* host) {
    return host->right_kind != 0;
}

// The address of the place; null when a subscript is out of range. `size`: the bytes that its type takes.
template <int size>
inline std::uint8_t* place_address(const Token* host) {
    void* operand = const_cast<void*>(host->step.left_operand);
    if (is_element(host)) return element_place<size>(static_cast<Token*>(operand));
    return static_cast<std::uint8_t*>(operand);
}
inline std::uint8_t* place_address(const Token* host) {
    void* operand = const_cast<void*>(host->step.left_operand);
    if (is_element(host)) return element_address(static_cast<Token*>(operand), place_type(host));
    return static_cast<std::uint8_t*>(operand);
}

}  // namespace korvane::fast
