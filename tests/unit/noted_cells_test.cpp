// Text that waits, against a screen on which everything is drawn at once.
#include "screen/noted_cells.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "memory_screen.h"
#include "platform/clock.h"
#include "random_bits.h"
#include "screen/font.h"
#include "screen/keyboard.h"
#include "screen/plot.h"

namespace korvane {
namespace {

using test::MemoryScreen;
using test::RandomBits;

// How fast the clock runs tells how long text waits: with a standing one not at all, with a fast one for
// ever.
constexpr std::uint64_t for_ever = std::numeric_limits<std::uint64_t>::max();

class Waiting {
  public:
    explicit Waiting(std::uint64_t ticks_per_second) { tsc_clock.ticks_per_second = ticks_per_second; }
    ~Waiting() { tsc_clock.ticks_per_second = 0; }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
};

// What the two buffers must hold: each operation as it is defined, pixel by pixel.
struct Model {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t pitch;
    std::vector<std::uint32_t> front;
    std::vector<std::uint32_t> back;

    explicit Model(const Screen& from)
        : width(from.width),
          height(from.height),
          pitch(from.pitch),
          front(std::size_t{from.pitch} * from.height),
          back(front.size()) {}

    void set(std::uint32_t x, std::uint32_t y, std::uint32_t colour) {
        front[std::size_t{y} * pitch + x] = colour;
        back[std::size_t{y} * pitch + x] = colour;
    }
    void cell(std::uint32_t row, std::uint32_t column, std::uint8_t code, std::uint32_t ink,
              std::uint32_t paper) {
        for (std::uint32_t y = 0; y < 16; ++y)
            for (std::uint32_t x = 0; x < 8; ++x)
                set(column * 8 + x, row * 16 + y, (font_glyphs[code][y] >> (7 - x) & 1) != 0 ? ink : paper);
    }
    void scroll(const CellRectangle& area, std::uint32_t paper) {
        for (std::uint32_t y = area.top * 16; y < area.bottom * 16; ++y)
            for (std::uint32_t x = area.left * 8; x < area.right * 8 + 8; ++x)
                set(x, y, back[(std::size_t{y} + 16) * pitch + x]);
        for (std::uint32_t column = area.left; column <= area.right; ++column)
            cell(area.bottom, column, ' ', 0, paper);
    }
};

void expect_same(const Model& model) {
    for (std::size_t i = 0; i < model.front.size(); ++i) {
        ASSERT_EQ(screen.framebuffer[i], model.front[i])
            << "x " << i % model.pitch << " y " << i / model.pitch;
        ASSERT_EQ(screen.back_buffer[i], model.back[i])
            << "x " << i % model.pitch << " y " << i / model.pitch;
    }
}

CellRectangle random_area(RandomBits& random, int columns, int rows) {
    const int left = random.below(columns);
    const int top = random.below(rows);
    return {static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(left + random.below(columns - left)),
            static_cast<std::uint32_t>(top), static_cast<std::uint32_t>(top + random.below(rows - top))};
}

// Few colours most of the time, and sometimes more than can be numbered.
std::uint32_t random_colour(RandomBits& random, bool many) {
    return static_cast<std::uint32_t>(random.bits()) & (many ? 0xFFFFFFu : 0x010001u);
}

void play(std::uint64_t seed, std::uint64_t ticks_per_second, bool has_back_buffer) {
    const Waiting waiting(ticks_per_second);
    RandomBits random(seed);
    MemoryScreen::pages_available = true;
    // 13 columns and 7 rows, with some pixels to the right of the cells, below them, and out of sight.
    MemoryScreen memory(107, 119, 112);
    if (!has_back_buffer) {
        MemoryScreen::pages_available = false;
        memory.set_mode(108, 120, 120);
    }
    Model model(screen);
    const bool many = random.below(4) == 0;
    CellRectangle area = random_area(random, 13, 7);
    // With many colours there are hardly any looks, so that the numbers run out.
    for (int step = 0; step < (many ? 3000 : 600); ++step) {
        const auto colour = random_colour(random, many);
        switch (random.below(many ? 3000 : 40)) {
            case 0:
                area = random_area(random, 13, 7);
                break;
            case 1: {
                const int x = random.below(107);
                const int y = random.below(119);
                gfx_plot(x, y, colour);
                model.set(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), colour);
                break;
            }
            case 2: {
                fill_pixels(3, 5, 60, 50, colour);
                for (std::uint32_t y = 5; y < 55; ++y)
                    for (std::uint32_t x = 3; x < 63; ++x)
                        model.set(x, y, colour);
                break;
            }
            case 3: {
                // As BITBLT does it: the next scroll takes it away again, where it scrolls.
                const std::uint64_t index = pixel_index(40, 40);
                screen_rectangle();
                screen.framebuffer[index] = colour;
                model.front[index] = colour;
                if (!has_back_buffer) model.back[index] = colour;
                break;
            }
            case 4: {
                const auto x = static_cast<std::uint32_t>(random.below(107));
                ASSERT_EQ(get_pixel(x, 77), model.back[pixel_index(x, 77)]);
                break;
            }
            case 5:
                bring_up_to_date();
                ASSERT_NO_FATAL_FAILURE(expect_same(model)) << "seed " << seed << " step " << step;
                break;
            case 6:
                draw_first_row(area);
                for (std::uint32_t y = area.top * 16; y < area.top * 16 + 16; ++y)
                    for (std::uint32_t x = area.left * 8; x < area.right * 8 + 8; ++x)
                        ASSERT_EQ(screen.framebuffer[pixel_index(x, y)], model.front[pixel_index(x, y)]);
                break;
            default:
                if (random.below(3) == 0) {
                    scroll_cells(area, colour);
                    model.scroll(area, colour);
                } else {
                    const bool inside = random.below(8) != 0;
                    const CellRectangle at = inside ? area : CellRectangle{0, 12, 0, 6};
                    const std::uint32_t row =
                        at.top +
                        static_cast<std::uint32_t>(random.below(static_cast<int>(at.bottom - at.top + 1)));
                    const std::uint32_t column =
                        at.left +
                        static_cast<std::uint32_t>(random.below(static_cast<int>(at.right - at.left + 1)));
                    const auto code = static_cast<std::uint8_t>(random.below(256));
                    const auto paper = random_colour(random, many);
                    draw_cell(row, column, code, colour, paper);
                    model.cell(row, column, code, colour, paper);
                }
        }
    }
    bring_up_to_date();
    ASSERT_NO_FATAL_FAILURE(expect_same(model)) << "seed " << seed;
    ASSERT_TRUE(memory.guard_is_intact());
    MemoryScreen::pages_available = true;
}

TEST(NotedCells, ShowWhatIsDrawnAtOnce) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed)
        ASSERT_NO_FATAL_FAILURE(play(seed, for_ever, true));
}

TEST(NotedCells, ShowTheSameWhenTheyAreDrawnAfterEachScroll) {
    for (std::uint64_t seed = 1001; seed <= 1100; ++seed)
        ASSERT_NO_FATAL_FAILURE(play(seed, 0, true));
}

TEST(NotedCells, ShowTheSameWithoutABackBuffer) {
    for (std::uint64_t seed = 2001; seed <= 2100; ++seed)
        ASSERT_NO_FATAL_FAILURE(play(seed, for_ever, false));
}

TEST(NotedCells, WaitFromTheFirstScrollOn) {
    const Waiting waiting(for_ever);
    MemoryScreen memory(160, 64);
    con_put_text("A\rB\rC\r");
    EXPECT_FALSE(screen.cells_wait);
    con_put_text("D\r");
    EXPECT_TRUE(screen.cells_wait);
    EXPECT_EQ(con_read_cell(0, 0), 'B');  // the grid does not wait
    bring_up_to_date();
    EXPECT_FALSE(screen.cells_wait);
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(NotedCells, WaitForAPartOfASecond) {
    const Waiting waiting(for_ever);
    MemoryScreen memory(160, 64);
    con_put_text("A\rB\rC\rD\r");
    draw_cells_if_due();
    EXPECT_TRUE(screen.cells_wait);
    tsc_clock.ticks_per_second = 0;
    draw_cells_if_due();
    EXPECT_FALSE(screen.cells_wait);
    con_put_text("E\r");
    EXPECT_FALSE(screen.cells_wait);  // due by the time that it has scrolled
}

// Whatever may look at pixels or draw them finds all text drawn.
TEST(NotedCells, AreDrawnBeforeAnybodyLooks) {
    const Waiting waiting(for_ever);
    MemoryScreen memory(160, 64);
    const std::uint32_t pixels[4] = {1, 2, 3, 4};
    const auto expect_drawn = [&](const char* by, const auto& look) {
        con_put_text("A\rB\rC\rD\r\xDB");
        ASSERT_TRUE(screen.cells_wait) << by;
        look();
        EXPECT_FALSE(screen.cells_wait) << by;
        EXPECT_EQ(memory.front(0, 48), white) << by;
    };
    expect_drawn(
        "get_pixel", [] { get_pixel(0, 0); });
    expect_drawn(
        "pixel_row", [] { pixel_row(0, 0, 4); });
    expect_drawn(
        "fill_pixel_row", [] { fill_pixel_row(20, 0, 4, 5); });
    expect_drawn(
        "fill_pixels", [] { fill_pixels(20, 0, 4, 2, 5); });
    expect_drawn(
        "store_pixel_row", [&] { store_pixel_row(20, 0, pixels); });
    expect_drawn(
        "move_pixels_up", [] { move_pixels_up(20, 0, 4, 4, 2); });
    expect_drawn(
        "screen_rectangle", [] { screen_rectangle(); });
    expect_drawn("gfx_plot", [] { gfx_plot(20, 0, 5); });
    expect_drawn(
        "another rectangle that scrolls",
        [] {
            scroll_cells({10, 12, 0, 1}, 0);
            bring_up_to_date();
        });
    expect_drawn("con_clear_cells", [] { con_clear_cells({10, 12, 0, 1}); });
}

// A mode that is gone has nothing to be drawn.
TEST(NotedCells, AreForgottenWithTheirMode) {
    const Waiting waiting(for_ever);
    MemoryScreen memory(160, 64);
    con_put_text("A\rB\rC\rD\r");
    ASSERT_TRUE(screen.cells_wait);
    memory.set_mode(80, 32);
    EXPECT_FALSE(screen.cells_wait);
    EXPECT_EQ(memory.front(0, 0), black);
}

// What lies off the screen, or wider than the grid is, is drawn at once, as far as there is memory.
TEST(NotedCells, OnlyWhatLiesOnTheScreenWaits) {
    const Waiting waiting(for_ever);
    MemoryScreen memory(160, 64);
    for (const CellRectangle& area :
         {CellRectangle{0, 20, 0, 1}, CellRectangle{0, 3, 0, 4}, CellRectangle{5, 4, 0, 1},
          CellRectangle{0, 255, 0, 1}, CellRectangle{0, 256, 0, 127}, CellRectangle{0, 3, 100, 200}}) {
        scroll_cells(area, 0);
        EXPECT_FALSE(screen.cells_wait);
        EXPECT_TRUE(memory.guard_is_intact());
    }
    scroll_cells({0, 19, 0, 3}, 0);
    EXPECT_TRUE(screen.cells_wait);
}

TEST(NotedCells, WhatDoesNotWaitIsScrolledAtOnce) {
    const Waiting waiting(for_ever);
    MemoryScreen memory(160, 64);
    draw_cell(1, 2, 0xDB, white, black);
    scroll_cells({0, 20, 0, 3}, black);  // a column wider than the screen
    EXPECT_EQ(memory.front(16, 0), white);
    EXPECT_EQ(memory.front(16, 16), black);
}

// There are numbers for 255 pairs of colours; the row that needs one more is drawn at once.
TEST(NotedCells, RowsOfEveryColourScrollIn) {
    const Waiting waiting(for_ever);
    for (std::uint32_t rows = 250; rows <= 260; ++rows) {
        MemoryScreen memory(160, 64);
        for (std::uint32_t row = 1; row <= rows; ++row)
            scroll_cells({0, 19, 0, 3}, row);
        bring_up_to_date();
        for (std::uint32_t row = 0; row < 4; ++row)
            ASSERT_EQ(memory.front(5, row * 16 + 5), rows - 3 + row) << rows << " rows, row " << row;
    }
}

}  // namespace
}  // namespace korvane
