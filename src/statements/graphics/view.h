// VIEW and VIEW PRINT.
#pragma once

#include "program/token.h"

namespace korvane {

// VIEW switches the viewport off. VIEW [SCREEN] (x1, y1)-(x2, y2)[, [fill][, border]] confines graphics to a
// rectangle of at least 2 by 2 pixels inside the screen, else "Illegal function call"; SCREEN keeps
// coordinates absolute. The fill colour fills it, the border colour frames it one pixel outside, where there
// is room on all four sides.
//
// VIEW PRINT [top TO bottom] confines text to these rows, counted from 1, or to all of them.
void do_view(Cursor& cursor);

}  // namespace korvane
