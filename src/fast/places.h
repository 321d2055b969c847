// Places to be written: scalars and array elements, found when the statement is looked at.
#pragma once

#include "fast/element_steps.h"
#include "fast/expression.h"
#include "fast/records.h"
#include "program/token.h"

namespace korvane::fast {

// A place of the statement that is being specialised.
struct Place {
    Type type;
    bool is_element;
    std::uint8_t* storage;  // of a scalar
    Expression element;
    Token* end;  // the token behind the place
};

// Reads the place whose name is at `name`. False when the general handler has something to say about it, or a
// new variable to create.
[[gnu::cold]] bool read_place(Token* name, Place& place);

// Makes the record in front of the place, which becomes a PlaceRecord, hold it.
[[gnu::cold]] void hold_place(Token* host, const Place& place);

// The address of the place; null when a subscript is out of range.
inline std::uint8_t* place_address(const PlaceRecord& host) {
    return host.is_element ? element_address(host.bracket, host.type) : host.storage;
}

}  // namespace korvane::fast
