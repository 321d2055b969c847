// DRAW: a small language of one-letter commands that move a pen.
//
//   U D L R n    moves n up, down, left, right
//   E F G H n    moves n diagonally: up right, down right, down left, up left
//   M x,y        moves to a point; by a step when x begins with a sign
//   B            the next move does not draw
//   N            the next move returns to where it started
//   C n          colour
//   S n          scale: distances count n / 4
//   A n, TA n    turns to n x 90 degrees; turns by n degrees more
//
// n defaults to 1 in the one-letter moves and is required elsewhere. Spaces and semicolons separate commands.
#pragma once

#include <string_view>

#include "program/token.h"

namespace korvane {

// Characters of the string that are interpreted; the rest is ignored.
inline constexpr std::uint32_t max_draw_commands = 511;

// Carries out a string of commands from the last point, which follows every move. Colour, scale and rotation
// start afresh in every call. Raises "Illegal function call" at the first faulty command; what was drawn
// before it stays.
void gfx_draw(std::string_view commands);

// DRAW string$. Raises "Type mismatch" and what gfx_draw() raises.
void do_draw(Cursor& cursor);

}  // namespace korvane
