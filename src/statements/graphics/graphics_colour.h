// Colour arguments of the graphics statements.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

// An optional ", colour" or ", r, g, b", as LINE takes it; without one, or with nothing behind the comma, the
// default. When a comma and the name B or BF, or another comma, follow, that comma is left for the caller.
// Raises "Illegal function call" for a bad colour and for a triple that is not complete. Look at
// error_pending() afterwards.
std::uint32_t gfx_parse_colour(Cursor& cursor, std::uint32_t default_colour);

// The same for PSET and PRESET, where B and BF are ordinary variables.
std::uint32_t parse_plain_colour(Cursor& cursor, std::uint32_t default_colour);

// One expression as a colour value.
std::uint32_t parse_colour_value(Cursor& cursor);

struct PaintColours {
    std::uint32_t paint;
    std::uint32_t border;
};

// The colours of PAINT, by their number: paint; paint, border; r, g, b; r, g, b, border. The first may be
// empty, then a border may follow. The border defaults to the paint colour. Raises "Illegal function call"
// for a bad colour and a fifth value.
PaintColours parse_paint_colours(Cursor& cursor, std::uint32_t default_colour);

}  // namespace korvane
