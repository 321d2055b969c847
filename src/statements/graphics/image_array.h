// The graphic forms of GET and PUT: rectangles of pixels in numeric arrays.
//
// An array image lies at the start of the array's elements, whatever their type:
//   offset 0   u32              width in pixels
//   offset 4   u32              height in pixels
//   offset 8   width*height*4   pixels 0x00RRGGBB, row by row from the top
#pragma once

#include "program/token.h"

namespace korvane {

// GET [STEP] (x1, y1)-[STEP] (x2, y2), array: copies a rectangle of the screen into the array. A corner off
// the screen and an array that is too small are "Illegal function call".
// The first point becomes the last point.
[[gnu::cold]] void do_get_graphics(Cursor& cursor);

// PUT [STEP] (x, y), array[, PSET | PRESET | AND | OR | XOR]: combines the image with the screen, by default
// with XOR. The image is never clipped: one that does not lie wholly on the screen is "Illegal function
// call", and so is an array that holds no image. The viewport does not apply and the last point stays.
void do_put_graphics(Cursor& cursor);

}  // namespace korvane
