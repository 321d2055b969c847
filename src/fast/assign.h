// Writing the value that "=" holds as its right side.
#pragma once

#include "fast/number_types.h"
#include "fast/records.h"
#include "fast/sides.h"

namespace korvane::fast {

// Writes the value of the right side of `equals` to a place of the type; false when the general handler has
// to do it.
template <Type type>
inline bool assign(std::uint8_t* place, const Token* equals) {
    using Number = NumberOf<type>;
    if constexpr (is_integer(type)) {
        const Whole value = quick_right_whole(equals);
        return value.failed == 0 && store_number<Number>(place, value.value);
    } else {
        const double value = type == Type::DOUBLE ? quick_right_real(equals) : right_real(equals);
        return store_number<Number>(place, value);
    }
}

inline std::uint8_t* place_of(const Token* equals) {
    return as<AssignmentRecord>(equals).place;
}
// The same of the assignment to an element whose name is at `at`.
inline Token* equals_of_element(const Token* at) {
    return as<ElementRecord>(at + 1).equals;
}
// The statement that follows the assignment.
inline Token* after(const Token* equals) {
    return as<AssignmentRecord>(equals).after;
}

}  // namespace korvane::fast
