// A framebuffer seen as text cells: each 8x16 cell is either a glyph in two colours or a piece of picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korvane::host {

// A framebuffer of 0x00RRGGBB words; rows are `pitch` words apart.
struct Pixels {
    const std::uint32_t* words;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t pitch;
};

// One cell, ready to be shown on a terminal. A glyph has its character in `ink` on `paper`. A cell that is
// no glyph has the upper half block: `ink` is the colour of its upper 8x8 pixels and `paper` of its lower.
// Where one colour is drawn on the cell's paper that is the drawing's, where thin lines of a few colours are
// drawn the most vivid one; in a picture of more it is the mean.
struct Cell {
    char32_t character;
    std::uint32_t ink;
    std::uint32_t paper;
    bool is_glyph;

    bool operator==(const Cell&) const = default;
};

// Recognises the cell at a text position, which must lie whole inside the picture. A cell of one colour is a
// blank on that colour.
Cell read_cell(const Pixels& pixels, std::uint32_t row, std::uint32_t column);

// The size of the picture in whole cells.
inline std::uint32_t cell_columns(const Pixels& pixels) {
    return pixels.width / 8;
}
inline std::uint32_t cell_rows(const Pixels& pixels) {
    return pixels.height / 16;
}

// A row of text in UTF-8, trailing blanks trimmed; cells that are no glyphs are left blank.
std::string read_row(const Pixels& pixels, std::uint32_t row);

// All rows of text in UTF-8, trailing blanks trimmed; cells that are no glyphs are left blank.
std::vector<std::string> read_rows(const Pixels& pixels);

}  // namespace korvane::host
