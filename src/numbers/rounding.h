// Whole numbers near a double.
#pragma once

#include <cstdint>

namespace korvane {

// The nearest integer, halves away from zero (2.5 gives 3, -2.5 gives -3); false when it leaves the INT64
// range, or the number is none.
inline bool nearest_integer(double x, std::int64_t& integer) {
    constexpr double limit = 9223372036854775808.0;
    if (!(x >= -limit && x < limit)) return false;  // a NaN fails both comparisons
    integer = static_cast<std::int64_t>(x);
    const double fraction = x - static_cast<double>(integer);
    if (__builtin_expect(fraction == 0, true)) return true;
    // Only numbers below 2^52 in magnitude have a fraction, so the step cannot leave the range.
    integer += (fraction >= 0.5) - (fraction <= -0.5);
    return true;
}

// As doubles:

// Toward zero; keeps the sign of a zero.
inline double truncated(double x) {
    // From here on every double is a whole number, a NaN or an infinity.
    constexpr double all_whole = 4503599627370496.0;  // 2^52
    if (!(x > -all_whole && x < all_whole)) return x;
    return __builtin_copysign(static_cast<double>(static_cast<std::int64_t>(x)), x);
}

// Toward minus infinity.
inline double rounded_down(double x) {
    const double whole = truncated(x);
    return whole > x ? whole - 1 : whole;
}

}  // namespace korvane
