// PAINT.
#pragma once

#include <cstdint>

#include "program/token.h"
#include "screen/graphics.h"

namespace korvane {

// Seeds that the fill remembers at most; one more is dropped silently,
// which may leave part of a region unfilled.
inline constexpr std::uint32_t paint_stack_capacity = 0x20000;

// Fills the region around a point up to pixels of the border or the paint colour. It is bounded by the screen
// only, the viewport does not clip it, which is deliberate. A start off the screen, or on a pixel that stops
// the fill, changes nothing.
void gfx_paint(Point start, std::uint32_t paint, std::uint32_t border);

// PAINT [STEP] (x, y)[, colours]: see parse_paint_colours(). The start point becomes the last point.
void do_paint(Cursor& cursor);

}  // namespace korvane
