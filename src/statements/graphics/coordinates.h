// The coordinate systems: from what a program writes to physical pixels.
//
// Without WINDOW a coordinate is a pixel, counted from the viewport's corner (or, with VIEW SCREEN or without
// a viewport, from the screen's). With WINDOW the logical corners span the viewport, or the whole screen.
#pragma once

#include <cstdint>

#include "program/token.h"
#include "screen/graphics.h"

namespace korvane {

// The physical pixel of a coordinate pair. Raises "Overflow" when a coordinate is beyond the INT64 range.
Point gfx_map(double x, double y);

// Makes the screen's centre the last point if there is none yet, and gives the last point.
Point gfx_settle_last_point();

void gfx_set_last_point(Point point);

// [STEP] (x, y): the physical point; STEP counts from `base`. Raises "Expected (", "Expected ,",
// "Expected )", "Type mismatch" and "Overflow"; false after an error.
bool gfx_parse_point(Cursor& cursor, Point base, Point& point);

// Two numbers "(" x "," y ")" as they are evaluated. Raises the same; false after an error.
bool parse_number_pair(Cursor& cursor, Value& x, Value& y);

// WINDOW switches logical coordinates off; WINDOW [SCREEN] (x1, y1)-(x2, y2) on. y grows upwards unless
// SCREEN is given. The corners are not sorted: x1 > x2 mirrors the axis, which is deliberate. Equal ones are
// "Illegal function call".
void do_window(Cursor& cursor);

}  // namespace korvane
