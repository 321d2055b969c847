#include "screen_text.h"

#include <gtest/gtest.h>

#include <string>

#include "hosted_machine.h"
#include "screen/font.h"

namespace korvane::transcript {
namespace {

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t blue = 0x0000AA;
constexpr std::uint8_t full_block = 219;

class ScreenTextTest : public host::HostedFirmwareTest {
  protected:
    void SetUp() override {
        host::Config config;
        config.width = 640;
        config.height = 480;
        start(config);
        fill(black);
    }
    std::uint32_t* pixels() { return const_cast<std::uint32_t*>(firmware_->display()->pixels().data()); }
    void fill(std::uint32_t colour) { std::fill_n(pixels(), 640 * 480, colour); }
    void draw(std::uint32_t row, std::uint32_t column, std::uint8_t code, std::uint32_t ink,
              std::uint32_t paper) {
        for (std::uint32_t y = 0; y < 16; ++y)
            for (std::uint32_t x = 0; x < 8; ++x)
                pixels()[(row * 16 + y) * 640 + column * 8 + x] =
                    (font_glyphs[code][y] >> (7 - x) & 1) != 0 ? ink : paper;
    }
    void print(std::uint32_t row, const std::string& text, std::uint32_t ink, std::uint32_t paper) {
        for (std::uint32_t column = 0; column < text.size(); ++column)
            draw(row, column, static_cast<std::uint8_t>(text[column]), ink, paper);
    }
    ScreenText read(bool find_cursor = true) { return read_screen(*firmware_->display(), find_cursor); }
};

TEST_F(ScreenTextTest, RowsAndTheCursor) {
    print(3, "HELLO  WORLD", white, black);
    draw(4, 7, full_block, white, black);
    const ScreenText screen = read();
    EXPECT_EQ(screen.rows.size(), 30U);
    EXPECT_EQ(screen.columns, 80U);
    EXPECT_EQ(screen.rows[3], "HELLO  WORLD");
    EXPECT_EQ(screen.rows[4], "");
    EXPECT_EQ(screen.cursor, (CellPosition{4, 7}));
    EXPECT_EQ(screen.used_rows(), 4U);
}

TEST_F(ScreenTextTest, AWaitingProgramHasNoCursor) {
    draw(4, 7, full_block, white, black);
    const ScreenText screen = read(false);
    EXPECT_EQ(screen.rows[4], "       █");
    EXPECT_FALSE(screen.cursor.has_value());
}

TEST_F(ScreenTextTest, BlanksOnColouredPaperAreBlanks) {
    print(2, "A B", white, blue);
    print(3, "  B", white, blue);
    const ScreenText screen = read();
    EXPECT_EQ(screen.rows[2], "A B");
    EXPECT_EQ(screen.rows[3], "  B");
    EXPECT_FALSE(screen.cursor.has_value());
}

TEST_F(ScreenTextTest, TheScreensOwnColourIsBlank) {
    fill(blue);
    print(0, "X", white, blue);
    draw(1, 0, full_block, white, blue);
    const ScreenText screen = read();
    EXPECT_EQ(screen.rows[0], "X");
    EXPECT_EQ(screen.cursor, (CellPosition{1, 0}));
}

TEST_F(ScreenTextTest, TheCursorStandsBehindText) {
    print(5, "K>", white, black);
    draw(5, 3, full_block, white, black);
    const ScreenText screen = read();
    EXPECT_EQ(screen.rows[5], "K>");
    EXPECT_EQ(screen.cursor, (CellPosition{5, 3}));
}

}  // namespace
}  // namespace korvane::transcript
