// Straight lines, and boxes of them.
#pragma once

#include <cstdint>

#include "screen/plot.h"

namespace korvane {

// The pixels of the integer Bresenham line from one point to the other, both ends included, as far as they
// lie inside gfx_clip(). Where the ideal line passes exactly between two pixels, the one nearer to the end is
// taken, so a line drawn backwards may differ by a pixel. The time taken depends on the pixels inside only.
void gfx_line(Point from, Point to, std::uint32_t colour);

// The four sides of a rectangle.
void gfx_box(const PixelRectangle& box, std::uint32_t colour);

}  // namespace korvane
