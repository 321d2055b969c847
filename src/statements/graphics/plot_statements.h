// PSET, PRESET and the graphics form of LINE.
#pragma once

#include "program/token.h"

namespace korvane {

// PSET [STEP] (x, y)[, colour | , r, g, b]: one pixel, by default in the foreground (PRESET: background). It
// becomes the last point, also when it lies off the screen.
void do_pset(Cursor& cursor);
void do_preset(Cursor& cursor);

// LINE [[STEP] (x1, y1)]-[STEP] (x2, y2)[, [colour | r, g, b][, B | , BF]]: a line, the outline of a box or a
// filled box, by default in the foreground. The second point becomes the last point.
void do_line(Cursor& cursor);

}  // namespace korvane
