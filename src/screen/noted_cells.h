// Text that scrolls is noted first and drawn later.
//
// To scroll a screen is to move millions of pixels, and a program that prints does so with every line. So the
// first scroll of a rectangle of cells only notes that its pixels lie behind, and from then on the characters
// that come into it are noted too, with their colours. All of it is drawn at once when somebody may look:
// before a pixel is read or drawn by anything else, before memory is read or written at an address, before a
// key is waited or asked for, before the firmware reads or writes a file, and else after a few milliseconds,
// at the next scroll or look for the break key. Nobody can tell the difference, but by the time it takes.
//
// Cells outside of the rectangle are drawn at once, for no noted cell overlaps them. While cells wait
// (screen.cells_wait), whoever touches pixels by other ways than these calls bring_up_to_date() first; the
// operations of screen/framebuffer.h and screen_rectangle() do.
#pragma once

#include <cstdint>

#include "screen/framebuffer.h"

namespace korvane {

inline constexpr std::uint32_t max_text_columns = 256;
inline constexpr std::uint32_t max_text_rows = 128;

// An inclusive rectangle of cells; empty when right < left or bottom < top.
struct CellRectangle {
    std::uint32_t left;
    std::uint32_t right;
    std::uint32_t top;
    std::uint32_t bottom;

    bool operator==(const CellRectangle&) const = default;
};

// Draws a character into a cell, or notes it.
void draw_cell(std::uint32_t row, std::uint32_t column, std::uint8_t code, std::uint32_t foreground,
               std::uint32_t background);

// Moves the pixels of a rectangle of cells up by one row and fills its bottom row with the background, or
// notes that.
void scroll_cells(const CellRectangle& area, std::uint32_t background);

// For a listener that looks at the row that the next scroll will take away: shows the pixels of a rectangle's
// top row as they must be. The others go on waiting.
void draw_first_row(const CellRectangle& area);

// For whoever comes by often: draws the cells that have been waiting for a few milliseconds.
void draw_cells_if_due();

}  // namespace korvane
