#include "screen_cells.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "screen/font.h"

namespace korvane::host {
namespace {

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t blue = 0x0000AA;

/// A small framebuffer whose lines are longer than its width.
class Canvas {
  public:
    Canvas(std::uint32_t columns, std::uint32_t rows)
        : width_(columns * 8), height_(rows * 16), words_(std::size_t{pitch()} * height_, black) {}

    void glyph(std::uint32_t row, std::uint32_t column, std::uint8_t code, std::uint32_t ink,
               std::uint32_t paper) {
        for (std::uint32_t y = 0; y < 16; ++y)
            for (std::uint32_t x = 0; x < 8; ++x)
                set(column * 8 + x, row * 16 + y, (font_glyphs[code][y] >> (7 - x) & 1) != 0 ? ink : paper);
    }
    void set(std::uint32_t x, std::uint32_t y, std::uint32_t colour) {
        words_[std::size_t{y} * pitch() + x] = colour;
    }
    Pixels pixels() const { return {words_.data(), width_, height_, pitch()}; }

  private:
    std::uint32_t pitch() const { return width_ + 24; }
    std::uint32_t width_;
    std::uint32_t height_;
    std::vector<std::uint32_t> words_;
};

TEST(ScreenCells, GlyphIsRecognisedInItsColours) {
    Canvas canvas(3, 2);
    canvas.glyph(1, 2, 'A', white, blue);
    EXPECT_EQ(read_cell(canvas.pixels(), 1, 2), (Cell{U'A', white, blue, true}));
}

TEST(ScreenCells, CellOfOneColourIsABlankOnIt) {
    Canvas canvas(1, 1);
    canvas.glyph(0, 0, ' ', white, blue);
    EXPECT_EQ(read_cell(canvas.pixels(), 0, 0), (Cell{U' ', blue, blue, true}));
}

TEST(ScreenCells, EveryGlyphLooksAsItWasDrawn) {
    for (int code = 0; code < 256; ++code) {
        Canvas canvas(1, 1);
        canvas.glyph(0, 0, static_cast<std::uint8_t>(code), white, blue);
        const Cell cell = read_cell(canvas.pixels(), 0, 0);
        ASSERT_TRUE(cell.is_glyph) << code;
        if (cell.character == U' ') {
            const bool is_blank = code == 0 || code == 32 || code == 255;
            EXPECT_TRUE(is_blank || code == 219) << code;
            EXPECT_EQ(cell.paper, is_blank ? blue : white) << code;
            continue;
        }
        // Some glyphs are others inside out; what is shown is the same.
        const bool swapped = cell.paper == white;
        EXPECT_EQ(cell.ink, swapped ? blue : white) << code;
        EXPECT_EQ(cell.paper, swapped ? white : blue) << code;
    }
}

TEST(ScreenCells, PixelsThatAreNoGlyphBecomeHalfBlocksInMeanColours) {
    Canvas canvas(1, 1);
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 0; x < 8; ++x)
            canvas.set(x, y, y < 8 ? (x < 4 ? 0x400000U : 0x800000U) : 0x0000FFU);
    canvas.set(0, 0, 0x000010);
    // Upper half: 31 pixels of 0x40 red, 32 of 0x80 and one of 0x10 blue, whose means are cut; lower half:
    // blue.
    EXPECT_EQ(read_cell(canvas.pixels(), 0, 0), (Cell{U'▀', 0x5F0000, 0x0000FF, false}));
}

TEST(ScreenCells, ThinLineInTwoColoursIsSeenInFullColour) {
    Canvas canvas(2, 1);
    canvas.set(3, 3, white);
    EXPECT_EQ(read_cell(canvas.pixels(), 0, 0), (Cell{U'▀', white, black, false}));
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 8; x < 16; ++x)
            canvas.set(x, y, x == 10 && y == 12 ? black : blue);
    EXPECT_EQ(read_cell(canvas.pixels(), 0, 1), (Cell{U'▀', blue, black, false}));
}

TEST(ScreenCells, LinesOfTwoColoursAreSeenInTheirHalves) {
    Canvas canvas(1, 1);
    canvas.set(3, 3, white);
    canvas.set(3, 12, blue);
    EXPECT_EQ(read_cell(canvas.pixels(), 0, 0), (Cell{U'▀', white, blue, false}));
}

TEST(ScreenCells, RowsAreTrimmedTextInUtf8) {
    Canvas canvas(4, 3);
    canvas.glyph(0, 0, 'H', white, black);
    canvas.glyph(0, 1, 130, white, black);
    canvas.glyph(2, 1, 205, white, black);
    canvas.set(25, 40, white);  // a lone pixel in row 2, column 3
    EXPECT_EQ(read_rows(canvas.pixels()), (std::vector<std::string>{"Hé", "", " ═"}));
}

}  // namespace
}  // namespace korvane::host
