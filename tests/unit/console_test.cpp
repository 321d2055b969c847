#include "screen/console.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "memory_screen.h"
#include "screen/font.h"

namespace korvane {
namespace {

using test::MemoryScreen;

std::string grid_row(std::uint32_t row, std::uint32_t columns) {
    return {reinterpret_cast<const char*>(console.grid[row]), columns};
}

void set_text_window(std::uint32_t left, std::uint32_t top, std::uint32_t right, std::uint32_t bottom) {
    console.text_window_active = true;
    console.text_window = {.left = left, .right = right, .top = top, .bottom = bottom};
}

void set_view_print(std::uint32_t top, std::uint32_t bottom) {
    console.view_print_active = true;
    console.view_print_top = top;
    console.view_print_bottom = bottom;
}

TEST(Console, GridIsAtMost256ColumnsBy128Rows) {
    MemoryScreen memory(1024, 768);
    EXPECT_EQ(text_columns(), 128u);
    EXPECT_EQ(text_rows(), 48u);
    memory.set_mode(2560, 1600);
    EXPECT_EQ(text_columns(), 256u);
    EXPECT_EQ(text_rows(), 100u);
    memory.set_mode(1920, 2160);
    EXPECT_EQ(text_columns(), 240u);
    EXPECT_EQ(text_rows(), 128u);
    memory.set_mode(87, 47);
    EXPECT_EQ(text_columns(), 10u);
    EXPECT_EQ(text_rows(), 2u);
}

TEST(Console, TextAreaIsTheWindowNarrowedToViewPrint) {
    MemoryScreen memory(640, 480);
    CellRectangle area = con_text_area();
    EXPECT_EQ(area.left, 0u);
    EXPECT_EQ(area.right, 79u);
    EXPECT_EQ(area.top, 0u);
    EXPECT_EQ(area.bottom, 29u);

    set_view_print(4, 19);
    area = con_text_area();
    EXPECT_EQ(area.top, 4u);
    EXPECT_EQ(area.bottom, 19u);
    EXPECT_EQ(area.right, 79u);

    set_text_window(10, 2, 30, 9);
    area = con_text_area();
    EXPECT_EQ(area.left, 10u);
    EXPECT_EQ(area.right, 30u);
    EXPECT_EQ(area.top, 4u);
    EXPECT_EQ(area.bottom, 9u);
}

TEST(Console, ScreenSmallerThanACellHasOneCellArea) {
    MemoryScreen memory(7, 15);
    const CellRectangle area = con_text_area();
    EXPECT_EQ(area.right, 0u);
    EXPECT_EQ(area.bottom, 0u);
    con_put_string("ABC\rD");
    EXPECT_TRUE(memory.guard_is_intact());
}

TEST(Console, LastColumnWrapsAndSetsTheContinuationFlag) {
    MemoryScreen memory(80, 64);
    con_put_string("0123456789");
    EXPECT_EQ(console.cursor_row, 1u);
    EXPECT_EQ(console.cursor_column, 0u);
    EXPECT_EQ(console.continuation[0], 0);
    EXPECT_EQ(console.continuation[1], 1);
    con_put_char('A');
    EXPECT_EQ(grid_row(0, 10), "0123456789");
    EXPECT_EQ(grid_row(1, 10), "A         ");
}

TEST(Console, CarriageReturnClearsTheNewRowsContinuationFlag) {
    MemoryScreen memory(80, 64);
    console.continuation[0] = 1;
    console.continuation[1] = 1;
    con_put_string("AB\r");
    EXPECT_EQ(console.cursor_row, 1u);
    EXPECT_EQ(console.cursor_column, 0u);
    EXPECT_EQ(console.continuation[0], 1);
    EXPECT_EQ(console.continuation[1], 0);
}

TEST(Console, CarriageReturnOnTheLastRowScrolls) {
    MemoryScreen memory(80, 64);
    con_put_string("one\rtwo\rthree\rfour");
    EXPECT_EQ(console.cursor_row, 3u);
    EXPECT_EQ(con_put_string("\r"), 3u);
    EXPECT_EQ(console.cursor_column, 0u);
    EXPECT_EQ(grid_row(0, 10), "two       ");
    EXPECT_EQ(grid_row(2, 10), "four      ");
    EXPECT_EQ(grid_row(3, 10), "          ");
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(Console, WrappingOnTheLastRowMarksItAsContinued) {
    MemoryScreen memory(80, 64);
    con_put_string("a\rb\rc\r0123456789");
    EXPECT_EQ(console.cursor_row, 3u);
    EXPECT_EQ(console.continuation[2], 0);
    EXPECT_EQ(console.continuation[3], 1);
    EXPECT_EQ(grid_row(2, 10), "0123456789");
}

TEST(Console, FlagsScrollWithTheirRows) {
    MemoryScreen memory(80, 64);
    console.continuation[2] = 1;
    console.continuation[3] = 1;
    con_scroll();
    EXPECT_EQ(console.continuation[0], 0);
    EXPECT_EQ(console.continuation[1], 1);
    EXPECT_EQ(console.continuation[2], 1);
    EXPECT_EQ(console.continuation[3], 0);
}

TEST(Console, EveryOtherControlCodeIsDrawn) {
    MemoryScreen memory(160, 64);
    for (const int code : {10, 8, 9, 7, 0, 27, 127, 255})
        con_put_char(static_cast<std::uint8_t>(code));
    EXPECT_EQ(console.cursor_row, 0u);
    EXPECT_EQ(console.cursor_column, 8u);
    EXPECT_EQ(console.grid[0][0], 10);
    EXPECT_EQ(console.grid[0][3], 7);
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 0; x < 8; ++x)
            ASSERT_EQ(memory.front(x, y), (font_glyphs[10][y] >> (7 - x) & 1) != 0 ? white : black);
}

TEST(Console, ScrollMovesOnlyTheTextArea) {
    MemoryScreen memory(80, 80);
    for (std::uint32_t y = 0; y < 80; ++y)
        for (std::uint32_t x = 0; x < 80; ++x)
            set_pixel(x, y, y * 256 + x);
    set_text_window(2, 1, 5, 3);
    console.background = 0xABCDEF;
    con_scroll();
    for (std::uint32_t y = 0; y < 80; ++y) {
        for (std::uint32_t x = 0; x < 80; ++x) {
            std::uint32_t expected = y * 256 + x;
            if (x >= 16 && x < 48 && y >= 16 && y < 48) expected = (y + 16) * 256 + x;
            if (x >= 16 && x < 48 && y >= 48 && y < 64) expected = 0xABCDEF;
            ASSERT_EQ(memory.front(x, y), expected) << x << "," << y;
            ASSERT_EQ(memory.back(x, y), expected) << x << "," << y;
        }
    }
}

TEST(Console, OneRowAreaDoesNotScroll) {
    MemoryScreen memory(80, 64);
    set_text_window(0, 1, 4, 1);
    con_put_string("ABCDE");
    EXPECT_EQ(grid_row(1, 5), "ABCDE");
    EXPECT_EQ(console.cursor_row, 1u);
    EXPECT_EQ(console.cursor_column, 0u);
}

TEST(Console, CursorOutsideTheAreaIsBroughtIn) {
    MemoryScreen memory(80, 80);
    set_text_window(3, 1, 6, 2);
    console.cursor_row = 0;
    console.cursor_column = 0;
    con_put_char('A');
    EXPECT_EQ(console.grid[1][3], 'A');
    console.cursor_row = 4;
    console.cursor_column = 9;
    con_put_char('B');
    EXPECT_EQ(console.grid[2][3], 'B');
}

TEST(Console, AreaWithoutRowsKeepsTheCursorAtItsBottom) {
    MemoryScreen memory(80, 160);
    set_text_window(0, 0, 9, 2);
    set_view_print(5, 8);
    con_put_string("A\rB");
    EXPECT_EQ(console.cursor_row, 2u);
    EXPECT_EQ(console.grid[2][0], 'B');
}

TEST(Console, FullClearFillsTheScreenWithTheBackground) {
    MemoryScreen memory(83, 70, 90);
    con_put_string("text\rtext");
    console.continuation[3] = 1;
    console.background = 0x102030;
    con_clear_all();
    EXPECT_EQ(memory.front(82, 69), 0x102030u);
    EXPECT_EQ(memory.front(83, 69), 0u);  // the unseen end of the scan line
    EXPECT_EQ(console.cursor_row, 0u);
    EXPECT_EQ(console.cursor_column, 0u);
    EXPECT_EQ(console.continuation[3], 0);
    EXPECT_EQ(grid_row(0, 10), "          ");
    EXPECT_EQ(graphics.last_point.x, 41);
    EXPECT_EQ(graphics.last_point.y, 35);
    EXPECT_TRUE(graphics.last_point_set);
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(Console, ResetIsWhiteOnBlack) {
    MemoryScreen memory(80, 64);
    console.foreground = 1;
    console.background = 2;
    con_put_string("text");
    con_reset();
    EXPECT_EQ(console.foreground, 0xFFFFFFu);
    EXPECT_EQ(console.background, 0u);
    EXPECT_EQ(memory.front(2, 4), 0u);
    EXPECT_EQ(con_read_cell(0, 0), ' ');
    EXPECT_EQ(console.cursor_column, 0u);
}

// A second, plain implementation: one pixel and one cell at a time, with a single buffer.
class Model {
  public:
    Model(std::uint32_t columns, std::uint32_t rows)
        : columns_(columns), rows_(rows), grid(rows, std::string(columns, ' ')), flags(rows, 0) {
        pixels.assign(std::size_t{columns} * 8 * rows * 16, 0);
    }

    void put(std::uint8_t code) {
        const std::uint32_t left = window ? console.text_window.left : 0;
        const std::uint32_t right = window ? console.text_window.right : columns_ - 1;
        std::uint32_t top = window ? console.text_window.top : 0;
        std::uint32_t bottom = window ? console.text_window.bottom : rows_ - 1;
        if (column < left || column > right) column = left;
        if (row < top) row = top;
        if (row > bottom) row = bottom;
        bool wrapped = false;
        if (code == 13) {
            row++;
            column = left;
        } else {
            draw(row, column, code);
            column++;
        }
        if (column > right) {
            column = left;
            row++;
            wrapped = true;
        }
        if (row > bottom) {
            scroll(left, right, top, bottom);
            row = bottom;
            column = left;
        }
        if (code == 13) flags[row] = 0;
        if (wrapped) flags[row] = 1;
    }

    std::uint32_t pixel(std::uint32_t x, std::uint32_t y) const {
        return pixels[std::size_t{y} * columns_ * 8 + x];
    }

  private:
    void draw(std::uint32_t r, std::uint32_t c, std::uint8_t code) {
        grid[r][c] = static_cast<char>(code);
        for (std::uint32_t y = 0; y < 16; ++y) {
            for (std::uint32_t x = 0; x < 8; ++x) {
                const bool is_set = (font_glyphs[code][y] >> (7 - x) & 1) != 0;
                pixels[(std::size_t{r} * 16 + y) * columns_ * 8 + c * 8 + x] =
                    is_set ? console.foreground : console.background;
            }
        }
    }

    void scroll(std::uint32_t left, std::uint32_t right, std::uint32_t top, std::uint32_t bottom) {
        if (bottom <= top) return;
        for (std::uint32_t r = top; r < bottom; ++r) {
            for (std::uint32_t c = left; c <= right; ++c)
                grid[r][c] = grid[r + 1][c];
            flags[r] = flags[r + 1];
            for (std::uint32_t y = 0; y < 16; ++y)
                for (std::uint32_t x = left * 8; x < right * 8 + 8; ++x)
                    pixels[(std::size_t{r} * 16 + y) * columns_ * 8 + x] = pixel(x, (r + 1) * 16 + y);
        }
        for (std::uint32_t c = left; c <= right; ++c)
            draw(bottom, c, ' ');
        flags[bottom] = 0;
    }

    std::uint32_t columns_;
    std::uint32_t rows_;
    std::vector<std::uint32_t> pixels;

  public:
    std::uint32_t row = 0;
    std::uint32_t column = 0;
    bool window = false;
    std::vector<std::string> grid;
    std::vector<std::uint8_t> flags;
};

TEST(Console, RandomTextMatchesAPlainModelPixelByPixel) {
    constexpr std::uint32_t columns = 11;
    constexpr std::uint32_t rows = 6;
    std::mt19937 random(20240607);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    for (int sequence = 0; sequence < 60; ++sequence) {
        MemoryScreen memory(columns * 8 + below(8), rows * 16 + below(16), columns * 8 + 8 + below(20));
        Model model(columns, rows);
        for (int step = 0; step < 300; ++step) {
            if (below(30) == 0) {
                console.foreground = below(0x1000000);
                console.background = below(0x1000000);
            }
            if (below(40) == 0) {
                model.window = below(3) != 0;
                console.text_window_active = false;
                if (model.window) {
                    const std::uint32_t left = below(columns);
                    const std::uint32_t top = below(rows);
                    set_text_window(left, top, left + below(columns - left), top + below(rows - top));
                }
            }
            const auto code = below(12) == 0 ? std::uint8_t{13} : static_cast<std::uint8_t>(below(256));
            con_put_char(code);
            model.put(code);
        }
        ASSERT_EQ(console.cursor_row, model.row);
        ASSERT_EQ(console.cursor_column, model.column);
        for (std::uint32_t r = 0; r < rows; ++r) {
            ASSERT_EQ(grid_row(r, columns), model.grid[r]) << sequence;
            ASSERT_EQ(console.continuation[r], model.flags[r]) << sequence;
        }
        for (std::uint32_t y = 0; y < rows * 16; ++y)
            for (std::uint32_t x = 0; x < columns * 8; ++x)
                ASSERT_EQ(memory.front(x, y), model.pixel(x, y));
        ASSERT_TRUE(memory.buffers_agree());
        ASSERT_TRUE(memory.guard_is_intact());
    }
}

}  // namespace
}  // namespace korvane
