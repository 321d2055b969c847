// The types of the results of + - * and "/" by the types of their operands; all other operators give always
// the same. The type codes are ordered by width.
#pragma once

#include <algorithm>

#include "numbers/value.h"

namespace korvane {

// + - * of two numbers. Integers give an INT64 (a DOUBLE where the result needs more bits), anything else the
// wider of both types.
constexpr Type sum_type(Type left, Type right) {
    const Type wider = std::max(left, right);
    return is_integer(wider) ? Type::INT64 : wider;
}

// "/" of two numbers: a DOUBLE if one of them is, else a SINGLE.
constexpr Type quotient_type(Type left, Type right) {
    return std::max({left, right, Type::SINGLE});
}

}  // namespace korvane
