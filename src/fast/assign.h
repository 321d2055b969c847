// Writing the value that "=" holds as its right side.
#pragma once

#include "fast/sides.h"

namespace korvane::fast {

// Writes the value of the right side of `equals` to a place of the type; false when the general handler has
// to do it.
template <Type type>
inline bool assign(std::uint8_t* place, const Token* equals) {
    if constexpr (type == Type::DOUBLE) {
        const double value = quick_right_real(equals);
        if (!is_finite(value)) return false;
        __builtin_memcpy(place, &value, sizeof value);
    } else if constexpr (type == Type::SINGLE) {
        const double value = right_real(equals);
        if (!is_finite(value)) return false;
        const auto narrow = static_cast<float>(value);
        __builtin_memcpy(place, &narrow, sizeof narrow);
    } else {
        const Whole value = quick_right_whole(equals);
        if (value.failed != 0) return false;
        if constexpr (type == Type::INTEGER) {
            const auto narrow = static_cast<std::int16_t>(value.value);
            if (narrow != value.value) return false;
            __builtin_memcpy(place, &narrow, sizeof narrow);
        } else if constexpr (type == Type::LONG) {
            const auto narrow = static_cast<std::int32_t>(value.value);
            if (narrow != value.value) return false;
            __builtin_memcpy(place, &narrow, sizeof narrow);
        } else {
            __builtin_memcpy(place, &value.value, sizeof value.value);
        }
    }
    return true;
}

inline std::uint8_t* place_of(const Token* equals) {
    return static_cast<std::uint8_t*>(const_cast<void*>(equals->step.left_operand));
}

// The handler of a statement that assigns to a number: `Handler` is a template of the number's type.
template <template <Type> class Handler>
Execute handler_of_number(Type type) {
    switch (type) {
        case Type::INTEGER:
            return Handler<Type::INTEGER>::execute;
        case Type::LONG:
            return Handler<Type::LONG>::execute;
        case Type::INT64:
            return Handler<Type::INT64>::execute;
        case Type::SINGLE:
            return Handler<Type::SINGLE>::execute;
        default:
            return Handler<Type::DOUBLE>::execute;
    }
}

}  // namespace korvane::fast
