// What differs between variables of the numeric types: how a number is kept, and what fits.
#pragma once

#include <cstdint>
#include <type_traits>

#include "fast/choose.h"
#include "fast/step.h"
#include "platform/memory.h"

namespace korvane::fast {

constexpr Leaf leaf_of(Type type) {
    switch (type) {
        case Type::INTEGER:
            return I16;
        case Type::LONG:
            return I32;
        case Type::INT64:
            return I64;
        case Type::SINGLE:
            return F32;
        case Type::STRING:
            return TEXT_VARIABLE;
        default:
            return F64;
    }
}

template <Type type>
using NumberOf = std::conditional_t<
    type == Type::INTEGER, std::int16_t,
    std::conditional_t<type == Type::LONG, std::int32_t,
                       std::conditional_t<type == Type::INT64, std::int64_t,
                                          std::conditional_t<type == Type::SINGLE, float, double>>>>;

// What `make` gives for a numeric type, which it takes as a Constant.
template <typename Make>
auto choose_by_type(Type type, Make make) {
    return choose<Type::INTEGER, Type::LONG, Type::INT64, Type::SINGLE, Type::DOUBLE>(type, make);
}

// Stores a number in a variable or element; false when it does not fit, or is none.
template <typename Number>
inline bool store_number(std::uint8_t* place, double value) {
    const auto narrow = static_cast<Number>(value);
    if (!is_finite(narrow)) return false;
    write_unaligned(place, narrow);
    return true;
}
template <typename Number>
inline bool store_number(std::uint8_t* place, std::int64_t value) {
    const auto narrow = static_cast<Number>(value);
    if (narrow != value) return false;
    write_unaligned(place, narrow);
    return true;
}

// The same where the type is not known beforehand: a double for a floating type, an integer for an
// integer one.
inline bool store_number(Type type, std::uint8_t* place, double value) {
    return type == Type::SINGLE ? store_number<float>(place, value) : store_number<double>(place, value);
}
inline bool store_number(Type type, std::uint8_t* place, std::int64_t value) {
    switch (type) {
        case Type::INTEGER:
            return store_number<std::int16_t>(place, value);
        case Type::LONG:
            return store_number<std::int32_t>(place, value);
        default:
            return store_number<std::int64_t>(place, value);
    }
}

}  // namespace korvane::fast
