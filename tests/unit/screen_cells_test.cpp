#include "screen_cells.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace korvane::host {
namespace {

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t grey = 0x606060;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t red = 0xC00000;

// One cell that can be drawn on.
class Drawing {
  public:
    void row(std::uint32_t y, std::uint32_t colour) {
        for (std::uint32_t x = 0; x < 8; ++x)
            point(x, y, colour);
    }
    void column(std::uint32_t x, std::uint32_t colour) {
        for (std::uint32_t y = 0; y < 16; ++y)
            point(x, y, colour);
    }
    void point(std::uint32_t x, std::uint32_t y, std::uint32_t colour) { words_[y * 8 + x] = colour; }
    Cell cell() const { return read_cell({words_.data(), 8, 16, 8}, 0, 0); }

  private:
    std::vector<std::uint32_t> words_ = std::vector<std::uint32_t>(128, black);
};

TEST(ScreenCells, ThinLineHasItsColour) {
    Drawing drawing;
    drawing.row(3, red);
    EXPECT_EQ(drawing.cell(), (Cell{U'▀', red, black, false}));
}

TEST(ScreenCells, CurveKeepsItsColourOverAGrid) {
    Drawing drawing;
    drawing.row(7, grey);
    drawing.column(4, grey);
    for (std::uint32_t x = 0; x < 8; ++x)
        drawing.point(x, x, red);
    EXPECT_EQ(drawing.cell().ink, red);
    EXPECT_EQ(drawing.cell().paper, grey);
}

TEST(ScreenCells, CurveKeepsItsColourOverABrightGrid) {
    Drawing drawing;
    drawing.row(0, white);
    drawing.column(0, white);
    drawing.row(5, red);
    drawing.row(13, red);
    EXPECT_EQ(drawing.cell().ink, red);
    EXPECT_EQ(drawing.cell().paper, red);
}

TEST(ScreenCells, CurveIsSeenWhereTheCellBeginsWithTheGrid) {
    Drawing drawing;
    drawing.column(0, grey);
    drawing.point(3, 3, red);
    EXPECT_EQ(drawing.cell().ink, red);
}

TEST(ScreenCells, FilledPicturesAreAveraged) {
    Drawing drawing;
    for (std::uint32_t y = 0; y < 8; ++y)
        drawing.row(y, y < 3 ? 0x900000 : y < 6 ? 0x009000 : 0x000090);
    // 24, 24 and 16 of 64 pixels.
    EXPECT_EQ(drawing.cell().ink, 0x363624U);
}

TEST(ScreenCells, ManyColoursAreAveraged) {
    Drawing drawing;
    for (std::uint32_t x = 0; x < 8; ++x)
        drawing.point(x, 0, x * 64);
    // 64 * (0 + 1 + 2 + 3) in the blue byte and (4 to 7) * 64 = 256, 320, 384, 448 with a green 1 each.
    EXPECT_EQ(drawing.cell().ink, (4 / 64) << 8 | (64 * 6 + (0 + 64 + 128 + 192)) / 64);
}

TEST(ScreenCells, CellOfOneColourIsBlank) {
    EXPECT_EQ(Drawing().cell(), (Cell{U' ', black, black, true}));
}

}  // namespace
}  // namespace korvane::host
