#include "screen/gfx_line.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <random>

#include "drawing_screen.h"

namespace korvane {
namespace {

constexpr std::uint32_t ink = 0x123456;

// The integer Bresenham line in its error-term form, a pixel at a time, each clipped.
std::vector<std::uint32_t> reference_line(Point from, Point to, const PixelRectangle& clip) {
    std::vector<std::uint32_t> pixels(std::size_t{screen.width} * screen.height, 0);
    const __int128 dx = from.x < to.x ? __int128{to.x} - from.x : __int128{from.x} - to.x;
    const __int128 dy = from.y < to.y ? __int128{to.y} - from.y : __int128{from.y} - to.y;
    const int sx = to.x > from.x ? 1 : -1;
    const int sy = to.y > from.y ? 1 : -1;
    __int128 err = dx - dy;
    while (true) {
        if (clip.contains(from.x, from.y))
            pixels[static_cast<std::size_t>(from.y) * screen.width + static_cast<std::size_t>(from.x)] = ink;
        if (from.x == to.x && from.y == to.y) return pixels;
        const __int128 e = 2 * err;
        if (e >= -dy) {
            err -= dy;
            from.x += sx;
        }
        if (e <= dx) {
            err += dx;
            from.y += sy;
        }
    }
}

void set_viewport(const PixelRectangle& viewport) {
    graphics.viewport_active = true;
    graphics.viewport = viewport;
}

void expect_reference_line(DrawingScreen& memory, Point from, Point to) {
    memory.clear();
    gfx_line(from, to, ink);
    ASSERT_EQ(memory.pixels(), reference_line(from, to, gfx_clip()))
        << from.x << "," << from.y << " to " << to.x << "," << to.y;
    ASSERT_TRUE(memory.buffers_are_equal());
}

TEST(GfxLine, EveryLineOfASmallSquareFollowsTheErrorTerm) {
    DrawingScreen memory(9, 9, 12);
    for (std::int64_t i = 0; i < 9 * 9 * 9 * 9; ++i)
        expect_reference_line(memory, {i % 9, i / 9 % 9}, {i / 81 % 9, i / 729});
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

TEST(GfxLine, HalvesGoTowardsTheEnd) {
    DrawingScreen memory(3, 2, 3);
    gfx_line({0, 0}, {2, 1}, ink);
    EXPECT_EQ(memory.pixels(), (std::vector<std::uint32_t>{ink, 0, 0, 0, ink, ink}));
    memory.clear();
    gfx_line({2, 1}, {0, 0}, ink);
    EXPECT_EQ(memory.pixels(), (std::vector<std::uint32_t>{ink, ink, 0, 0, 0, ink}));
}

TEST(GfxLine, ClippedLinesShowThePixelsOfTheWholeLine) {
    DrawingScreen memory(23, 17, 32);
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int64_t> coordinate(-60, 90);
    for (int i = 0; i < 30000; ++i) {
        expect_reference_line(memory, {coordinate(random), coordinate(random)},
                              {coordinate(random), coordinate(random)});
        if (i == 15000) set_viewport({5, 4, 11, 13});
    }
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

TEST(GfxLine, LongLinesShowThePixelsOfTheWholeLine) {
    DrawingScreen memory(23, 17, 32);
    set_viewport({2, 3, 20, 14});
    std::mt19937 random(2);
    std::uniform_int_distribution<std::int64_t> coordinate(-20000, 20000);
    std::uniform_int_distribution<std::int64_t> inside(0, 22);
    for (int i = 0; i < 300; ++i) {
        // Through the screen, so that there is something to see.
        const Point centre = {inside(random), inside(random)};
        const Point from = {coordinate(random), coordinate(random)};
        expect_reference_line(memory, from, {2 * centre.x - from.x, 2 * centre.y - from.y});
    }
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

TEST(GfxLine, TheLargestCoordinatesAreDrawnExactly) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    DrawingScreen memory(16, 16, 16);
    gfx_line({lowest, lowest}, {highest, highest}, ink);
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 0; x < 16; ++x)
            ASSERT_EQ(get_pixel(x, y), x == y ? ink : 0);
    memory.clear();
    gfx_line({lowest, 3}, {highest, 3}, ink);
    gfx_line({5, highest}, {5, lowest}, ink);
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 0; x < 16; ++x)
            ASSERT_EQ(get_pixel(x, y), x == 5 || y == 3 ? ink : 0);
    // y moves one row in 2^63 - 2 columns: the first half of the line lies on row 0, the second on row 1.
    memory.clear();
    gfx_line({lowest + 2, 0}, {0, 1}, ink);
    for (std::uint32_t y = 0; y < 16; ++y)
        for (std::uint32_t x = 0; x < 16; ++x)
            ASSERT_EQ(get_pixel(x, y), x == 0 && y == 1 ? ink : 0);
    memory.clear();
    gfx_line({0, highest}, {lowest, lowest}, ink);  // leaves the screen above and to the left
    gfx_line({lowest, 0}, {lowest, 5}, ink);
    EXPECT_TRUE(memory.unseen_words_are_untouched());
    EXPECT_TRUE(memory.buffers_are_equal());
}

TEST(GfxLine, RowsOutsideTheBuffersMemoryAreDropped) {
    DrawingScreen memory(10, 10, 12);
    screen.addressable = 12 * 7;
    gfx_line({0, 0}, {9, 9}, ink);
    gfx_line({0, 9}, {9, 9}, ink);
    screen.addressable = 12 * 10;
    for (std::uint32_t y = 0; y < 10; ++y)
        for (std::uint32_t x = 0; x < 10; ++x)
            ASSERT_EQ(get_pixel(x, y), x == y && y < 7 ? ink : 0);
}

}  // namespace
}  // namespace korvane
