// Whole numbers near a double, as a double.
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

}  // namespace korvane
