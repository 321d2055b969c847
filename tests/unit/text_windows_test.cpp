#include "screen/text_windows.h"

#include <gtest/gtest.h>

#include <string>

#include "memory_screen.h"
#include "screen/font.h"

namespace korvane {
namespace {

using test::MemoryScreen;

TextWindow window_at(std::uint32_t left, std::uint32_t top, std::uint32_t right, std::uint32_t bottom) {
    return {.defined = 1,
            .left = left,
            .top = top,
            .right = right,
            .bottom = bottom,
            .cursor_column = left,
            .cursor_row = top,
            .foreground = 0x00FF00,
            .background = 0x000080};
}

void put(TextWindow& window, const std::string& text) {
    for (const char character : text)
        win_put_char(window, static_cast<std::uint8_t>(character));
}

std::string cells(std::uint32_t row, std::uint32_t left, std::uint32_t count) {
    return {reinterpret_cast<const char*>(&console.grid[row][left]), count};
}

TEST(TextWindows, TextWrapsAndScrollsInsideTheWindow) {
    MemoryScreen memory(160, 160);
    console.cursor_row = 7;
    console.cursor_column = 8;
    TextWindow window = window_at(2, 1, 5, 3);
    put(window, "ABCDEF\rG");
    EXPECT_EQ(cells(1, 0, 8), "  ABCD  ");
    EXPECT_EQ(cells(2, 0, 8), "  EF    ");
    EXPECT_EQ(cells(3, 0, 8), "  G     ");
    put(window, "\rH");
    EXPECT_EQ(cells(1, 0, 8), "  EF    ");
    EXPECT_EQ(cells(2, 0, 8), "  G     ");
    EXPECT_EQ(cells(3, 0, 8), "  H     ");
    EXPECT_EQ(window.cursor_row, 3u);
    EXPECT_EQ(window.cursor_column, 3u);
    // Neither the console's cursor nor a continuation flag is touched.
    EXPECT_EQ(console.cursor_row, 7u);
    EXPECT_EQ(console.cursor_column, 8u);
    for (const std::uint8_t flag : console.continuation)
        EXPECT_EQ(flag, 0);
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(TextWindows, CharactersHaveTheWindowsColours) {
    MemoryScreen memory(160, 160);
    TextWindow window = window_at(2, 1, 5, 3);
    put(window, "A");
    for (std::uint32_t y = 0; y < 16; ++y) {
        for (std::uint32_t x = 0; x < 8; ++x) {
            const bool is_set = (font_glyphs['A'][y] >> (7 - x) & 1) != 0;
            ASSERT_EQ(memory.front(16 + x, 16 + y), is_set ? 0x00FF00u : 0x000080u);
        }
    }
}

TEST(TextWindows, OneCellWindowShowsNothingButItsBackground) {
    MemoryScreen memory(160, 160);
    TextWindow window = window_at(4, 4, 4, 4);
    put(window, "X");
    EXPECT_EQ(console.grid[4][4], ' ');
    EXPECT_EQ(memory.front(35, 70), 0x000080u);
    EXPECT_EQ(window.cursor_column, 4u);
    EXPECT_EQ(window.cursor_row, 4u);
}

TEST(TextWindows, OneRowWindowIsBlankedByScrolling) {
    MemoryScreen memory(160, 160);
    TextWindow window = window_at(0, 2, 4, 2);
    put(window, "ABCD");
    EXPECT_EQ(cells(2, 0, 6), "ABCD  ");
    put(window, "E");
    EXPECT_EQ(cells(2, 0, 6), "      ");
    for (std::uint32_t y = 32; y < 48; ++y)
        for (std::uint32_t x = 0; x < 40; ++x)
            ASSERT_EQ(memory.front(x, y), 0x000080u);
    EXPECT_EQ(memory.front(40, 32), 0u);
    EXPECT_EQ(memory.front(0, 48), 0u);
}

TEST(TextWindows, ClearFillsTheRectangleAndHomesTheCursor) {
    MemoryScreen memory(160, 160);
    TextWindow window = window_at(2, 1, 5, 3);
    put(window, "ABCDEFGHI");
    win_clear(window);
    for (std::uint32_t y = 0; y < 80; ++y) {
        for (std::uint32_t x = 0; x < 80; ++x) {
            const bool inside = x >= 16 && x < 48 && y >= 16 && y < 64;
            ASSERT_EQ(memory.front(x, y), inside ? 0x000080u : 0u);
        }
    }
    EXPECT_EQ(cells(1, 2, 4), "    ");
    EXPECT_EQ(window.cursor_row, 1u);
    EXPECT_EQ(window.cursor_column, 2u);
}

TEST(TextWindows, WindowOfALargerModeDrawsAtItsOldCells) {
    MemoryScreen memory(320, 320);
    TextWindow window = window_at(10, 5, 39, 19);
    // Half of the window's columns and most of its rows now lie off the screen.
    memory.set_mode(160, 96);
    con_reset();
    put(window, "A");
    EXPECT_EQ(console.grid[5][10], 'A');
    for (std::uint32_t y = 0; y < 16; ++y) {
        for (std::uint32_t x = 0; x < 8; ++x) {
            const bool is_set = (font_glyphs['A'][y] >> (7 - x) & 1) != 0;
            ASSERT_EQ(memory.front(80 + x, 80 + y), is_set ? 0x00FF00u : 0x000080u);
        }
    }
    for (int line = 0; line < 40; ++line)
        put(window, "text that wraps at the right edge\r");
    win_clear(window);
    win_scroll(window);
    EXPECT_TRUE(memory.guard_is_intact());
    EXPECT_TRUE(memory.buffers_agree());
}

}  // namespace
}  // namespace korvane
