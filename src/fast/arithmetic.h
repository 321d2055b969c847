// The arithmetic operators on two floating numbers of one type. Results that are no finite numbers travel on:
// they stay so through + - *, and whoever takes the last result looks. Only a divisor is looked at before it
// can hide one.
//
// A SINGLE result is by definition computed in binary64 and rounded; for two floats that is the same as
// computing in binary32, because binary64 has more than twice the digits.
#pragma once

#include "fast/step.h"

namespace korvane::fast {

template <int operation, typename Number>
inline Number apply(Number left, Number right) {
    if constexpr (operation == '+') return left + right;
    if constexpr (operation == '-') return left - right;
    if constexpr (operation == '*') return left * right;
    if constexpr (operation == '/') return is_finite(right) ? left / right : static_cast<Number>(no_number());
}

}  // namespace korvane::fast
