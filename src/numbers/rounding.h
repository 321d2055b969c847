// Whole numbers near a double.
#pragma once

#include <cstdint>

namespace korvane {

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

// The nearest integer, halves away from zero. False for a NaN and for what lies outside the INT64 range.
inline bool round_to_nearest(double x, std::int64_t& whole) {
    constexpr double limit = 9223372036854775808.0;
    if (!(x >= -limit && x < limit)) return false;  // a NaN fails both comparisons
    whole = static_cast<std::int64_t>(x);
    const double fraction = x - static_cast<double>(whole);
    // Only numbers below 2^52 in magnitude have a fraction, so neither step can leave the INT64 range.
    if (__builtin_expect(fraction != 0, false)) whole += (fraction >= 0.5) - (fraction <= -0.5);
    return true;
}

}  // namespace korvane
