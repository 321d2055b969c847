#include "screen/font.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace korvane {
namespace {

bool pixel(int code, std::uint32_t x, std::uint32_t y) {
    return (font_glyphs[code][y] >> (7 - x) & 1) != 0;
}

// Which of a cell's four neighbours a box-drawing character joins, and with how many strokes.
struct BoxCharacter {
    int code;
    int left, right, up, down;
};

constexpr BoxCharacter box_characters[] = {
    {179, 0, 0, 1, 1}, {180, 1, 0, 1, 1}, {181, 2, 0, 1, 1}, {182, 1, 0, 2, 2}, {183, 1, 0, 0, 2},
    {184, 2, 0, 0, 1}, {185, 2, 0, 2, 2}, {186, 0, 0, 2, 2}, {187, 2, 0, 0, 2}, {188, 2, 0, 2, 0},
    {189, 1, 0, 2, 0}, {190, 2, 0, 1, 0}, {191, 1, 0, 0, 1}, {192, 0, 1, 1, 0}, {193, 1, 1, 1, 0},
    {194, 1, 1, 0, 1}, {195, 0, 1, 1, 1}, {196, 1, 1, 0, 0}, {197, 1, 1, 1, 1}, {198, 0, 2, 1, 1},
    {199, 0, 1, 2, 2}, {200, 0, 2, 2, 0}, {201, 0, 2, 0, 2}, {202, 2, 2, 2, 0}, {203, 2, 2, 0, 2},
    {204, 0, 2, 2, 2}, {205, 2, 2, 0, 0}, {206, 2, 2, 2, 2}, {207, 2, 2, 1, 0}, {208, 1, 1, 2, 0},
    {209, 2, 2, 0, 1}, {210, 1, 1, 0, 2}, {211, 0, 1, 2, 0}, {212, 0, 2, 1, 0}, {213, 0, 2, 0, 1},
    {214, 0, 1, 0, 2}, {215, 1, 1, 2, 2}, {216, 2, 2, 1, 1}, {217, 1, 0, 1, 0}, {218, 0, 1, 0, 1},
};

// The pixels of a cell's edge as a bit pattern:
// one bit a pixel row at the sides, a pixel column above and below.
std::uint32_t side_edge(int code, std::uint32_t x) {
    std::uint32_t bits = 0;
    for (std::uint32_t y = 0; y < glyph_height; ++y)
        bits = bits << 1 | static_cast<std::uint32_t>(pixel(code, x, y));
    return bits;
}

// The edges of the straight lines, which every other character must meet: none, a single, a double stroke.
constexpr int horizontal_lines[] = {32, 196, 205};
constexpr int vertical_lines[] = {32, 179, 186};

TEST(Font, BlankCodesAreBlank) {
    for (const int code : {0, 32, 255})
        for (const std::uint8_t row : font_glyphs[code])
            EXPECT_EQ(row, 0) << "code " << code;
}

TEST(Font, EveryOtherCodeHasAGlyph) {
    for (int code = 1; code < 255; ++code) {
        if (code == 32) continue;
        int pixels = 0;
        for (const std::uint8_t row : font_glyphs[code])
            pixels += __builtin_popcount(row);
        EXPECT_NE(pixels, 0) << "code " << code;
    }
}

TEST(Font, BulletIsTheInverseBulletInsideOut) {
    for (std::uint32_t y = 0; y < glyph_height; ++y)
        EXPECT_EQ(font_glyphs[7][y], font_glyphs[8][y] ^ 0xFF);
}

TEST(Font, BoxDrawingLinesAreThere) {
    EXPECT_NE(side_edge(196, 0), 0U);
    EXPECT_NE(side_edge(205, 0), 0U);
    EXPECT_NE(side_edge(196, 0), side_edge(205, 0));
    EXPECT_NE(font_glyphs[179][0], 0);
    EXPECT_NE(font_glyphs[186][0], 0);
    EXPECT_NE(font_glyphs[179][0], font_glyphs[186][0]);
}

TEST(Font, BoxDrawingJoinsAcrossCells) {
    for (const BoxCharacter& box : box_characters) {
        EXPECT_EQ(side_edge(box.code, 0), side_edge(horizontal_lines[box.left], 7)) << "left of " << box.code;
        EXPECT_EQ(side_edge(box.code, 7), side_edge(horizontal_lines[box.right], 0))
            << "right of " << box.code;
        EXPECT_EQ(font_glyphs[box.code][0], font_glyphs[vertical_lines[box.up]][15]) << "above " << box.code;
        EXPECT_EQ(font_glyphs[box.code][15], font_glyphs[vertical_lines[box.down]][0])
            << "below " << box.code;
    }
}

TEST(Font, BlocksFillTheirPartOfTheCell) {
    for (std::uint32_t y = 0; y < glyph_height; ++y) {
        EXPECT_EQ(font_glyphs[219][y], 0xFF);
        EXPECT_EQ(font_glyphs[220][y], y < 8 ? 0x00 : 0xFF);
        EXPECT_EQ(font_glyphs[221][y], 0xF0);
        EXPECT_EQ(font_glyphs[222][y], 0x0F);
        EXPECT_EQ(font_glyphs[223][y], y < 8 ? 0xFF : 0x00);
    }
}

TEST(Font, ShadesAreQuarterHalfAndThreeQuartersAndTile) {
    const int expected_pixels[] = {32, 64, 96};
    for (int shade = 0; shade < 3; ++shade) {
        int pixels = 0;
        for (std::uint32_t y = 0; y < glyph_height; ++y) {
            pixels += __builtin_popcount(font_glyphs[176 + shade][y]);
            // A period of four pixels and two rows divides the cell,
            // so neighbouring cells continue the pattern.
            EXPECT_EQ(font_glyphs[176 + shade][y] >> 4, font_glyphs[176 + shade][y] & 0x0F);
            EXPECT_EQ(font_glyphs[176 + shade][y], font_glyphs[176 + shade][y % 2]);
        }
        EXPECT_EQ(pixels, expected_pixels[shade]);
    }
}

TEST(Font, LettersHaveTheirShape) {
    // "L": a stem at the left and a foot, nothing at the upper right.
    EXPECT_TRUE(pixel('L', 1, 4));
    EXPECT_TRUE(pixel('L', 6, 11));
    EXPECT_FALSE(pixel('L', 6, 4));
    EXPECT_FALSE(pixel('L', 1, 15));
}

}  // namespace
}  // namespace korvane
