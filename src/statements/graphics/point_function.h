// POINT: reading a pixel.
#pragma once

#include "numbers/value.h"

namespace korvane {

// The pixel at a coordinate pair, mapped as PSET maps it: a LONG of the form 0xRRGGBB read from the back
// buffer, or -1 outside the screen. Raises "Overflow" as gfx_map() does.
Value gfx_point(double x, double y);

}  // namespace korvane
