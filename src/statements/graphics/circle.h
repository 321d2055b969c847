// CIRCLE.
#pragma once

#include <cstdint>

#include "program/token.h"
#include "screen/graphics.h"

namespace korvane {

// The pixels of the midpoint circle as far as they lie inside gfx_clip(). A radius of 0 is the centre alone;
// a negative one draws nothing. The time taken depends on the screen's size, not on the radius.
void gfx_circle(Point centre, std::int64_t radius, std::uint32_t colour);

// CIRCLE [STEP] (x, y), r[, [colour][, ...]]: the radius counts in pixels whatever WINDOW says; a negative
// one is "Illegal function call". Only full circles are drawn: further values (angles, aspect) are evaluated
// and ignored, which is deliberate. The centre becomes the last point.
void do_circle(Cursor& cursor);

}  // namespace korvane
