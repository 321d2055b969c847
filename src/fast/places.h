// Places to be written: scalars and array elements, found when the statement is looked at.
#pragma once

#include "fast/element_steps.h"
#include "fast/records.h"
#include "program/token.h"

namespace korvane::fast {

// Binds the place whose name is at `at` to the record in front of it, its host, which becomes a PlaceRecord,
// and moves `at` behind the place. False when the general handler has something to say about the place, or a
// new variable to create.
bool bind_place(Token* host, Token*& at);

// The address of the place; null when a subscript is out of range. `size`: the bytes that its type takes.
template <int size>
inline std::uint8_t* place_address(const PlaceRecord& host) {
    return host.is_element ? element_place<size>(host.bracket) : host.storage;
}
inline std::uint8_t* place_address(const PlaceRecord& host) {
    return host.is_element ? element_address(host.bracket, host.type) : host.storage;
}

}  // namespace korvane::fast
