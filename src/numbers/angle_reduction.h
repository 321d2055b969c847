// Exact argument reduction of the circular functions.
#pragma once

#include <cstdint>

#include "numbers/double_double.h"

namespace korvane {

// An angle as `quadrant` quarter turns plus a rest of magnitude at most pi/4 (and a rounding error).
struct ReducedAngle {
    DoubleDouble rest;
    std::uint32_t quadrant;  // modulo 4
};

// Reduces a finite angle of magnitude at least 1/2. The rest is good to about 2^-70 of its own size for every
// argument: none comes closer to a multiple of pi/2 than 2^-62. Its low part is less than 2^-53.
ReducedAngle reduce_angle(double angle);

}  // namespace korvane
