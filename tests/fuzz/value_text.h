// What a variable holds, as text for comparisons.
#pragma once

#include <cstdint>
#include <ostream>
#include <string_view>

#include "values/variables.h"

namespace korvane::fuzz {

inline void put_value(std::ostream& out, std::uint8_t* storage, Type type) {
    const Value value = load({storage, type});
    if (type == Type::STRING)
        out << '"' << std::string_view(reinterpret_cast<const char*>(value.bytes), value.length) << '"';
    else if (is_integer(type))
        out << value.integer;
    else
        out << value.real;
}

}  // namespace korvane::fuzz
