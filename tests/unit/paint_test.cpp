#include "statements/graphics/paint.h"

#include <gtest/gtest.h>

#include <random>

#include "drawing_screen.h"

namespace korvane {
namespace {

constexpr std::uint32_t paint = 0x00FF00;
constexpr std::uint32_t border = 0xFF0000;

// Everything that is connected with the start by horizontal and vertical steps over pixels that do not stop
// the fill.
std::vector<std::uint32_t> reference_fill(std::vector<std::uint32_t> pixels, Point start) {
    const std::int64_t width = screen.width;
    const std::int64_t height = screen.height;
    std::vector<Point> open = {start};
    while (!open.empty()) {
        const Point at = open.back();
        open.pop_back();
        if (at.x < 0 || at.y < 0 || at.x >= width || at.y >= height) continue;
        std::uint32_t& pixel = pixels[static_cast<std::size_t>(at.y * width + at.x)];
        if ((pixel & 0xFFFFFF) == paint || (pixel & 0xFFFFFF) == border) continue;
        pixel = paint;
        for (const Point step : {Point{1, 0}, Point{-1, 0}, Point{0, 1}, Point{0, -1}})
            open.push_back({at.x + step.x, at.y + step.y});
    }
    return pixels;
}

TEST(GfxPaint, FillsTheConnectedRegionOfRandomPictures) {
    DrawingScreen memory(40, 30, 48);
    std::mt19937 random(1);
    for (int i = 0; i < 400; ++i) {
        // From nearly empty to nearly full of border pixels; the rest in colours that are neither.
        const unsigned density = static_cast<unsigned>(i) % 8 * 8;
        for (std::uint32_t y = 0; y < 30; ++y) {
            for (std::uint32_t x = 0; x < 40; ++x) {
                const unsigned roll = static_cast<unsigned>(random()) % 100;
                set_pixel(x, y, roll < density ? border : roll == 99 ? 0x55000000 | paint : roll);
            }
        }
        const Point start = {static_cast<std::int64_t>(random() % 40),
                             static_cast<std::int64_t>(random() % 30)};
        const std::vector<std::uint32_t> expected = reference_fill(memory.pixels(), start);
        gfx_paint(start, paint, border);
        ASSERT_EQ(memory.pixels(), expected);
        ASSERT_TRUE(memory.buffers_are_equal());
    }
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

TEST(GfxPaint, TheViewportDoesNotBoundIt) {
    DrawingScreen memory(12, 12, 12);
    graphics.viewport_active = true;
    graphics.viewport = {4, 4, 7, 7};
    gfx_paint({5, 5}, paint, border);
    EXPECT_EQ(memory.pixels(), std::vector<std::uint32_t>(144, paint));
}

TEST(GfxPaint, AStartOffTheScreenOrOnAStoppingPixelChangesNothing) {
    DrawingScreen memory(6, 6, 6);
    set_pixel(2, 2, border);
    set_pixel(3, 3, 0xAB000000 | paint);  // only the low 24 bits count
    const std::vector<std::uint32_t> before = memory.pixels();
    for (const Point start : {Point{-1, 0}, Point{0, -1}, Point{6, 0}, Point{0, 6}, Point{2, 2}, Point{3, 3},
                              Point{INT64_MIN, INT64_MAX}}) {
        gfx_paint(start, paint, border);
        ASSERT_EQ(memory.pixels(), before);
    }
}

TEST(GfxPaint, WorksWithTheFramebufferAloneWhenThereIsNoBackBuffer) {
    DrawingScreen drawing(12, 12, 16);
    screen.back_buffer = screen.framebuffer;
    screen.back_buffer_capacity = 0;
    for (std::uint32_t y = 0; y < 12; ++y)
        set_pixel(6, y, border);
    gfx_paint({2, 2}, paint, border);
    for (std::uint32_t y = 0; y < 12; ++y)
        for (std::uint32_t x = 0; x < 12; ++x)
            ASSERT_EQ(screen.framebuffer[pixel_index(x, y)], x < 6 ? paint : x == 6 ? border : 0U);
}

TEST(GfxPaint, RowsOutsideTheBuffersMemoryAreDropped) {
    DrawingScreen drawing(12, 12, 16);
    screen.addressable = 16 * 7;
    gfx_paint({2, 8}, paint, border);
    gfx_paint({2, 2}, paint, border);
    screen.addressable = 16 * 12;
    for (std::uint32_t y = 0; y < 12; ++y)
        ASSERT_EQ(get_pixel(5, y), y < 7 ? paint : 0U);
}

// A comb: from the row below its spine, each of the teeth's gaps is one seed, pushed from left to right and
// taken from right to left. With more gaps than the stack holds, the rightmost ones are dropped.
TEST(GfxPaint, SeedsBeyondTheStackAreDroppedSilently) {
    constexpr std::uint32_t gaps = paint_stack_capacity + 10;
    DrawingScreen memory(gaps * 2, 2, gaps * 2);
    for (std::uint32_t gap = 0; gap < gaps; ++gap)
        set_pixel(gap * 2 + 1, 1, border);
    gfx_paint({0, 0}, paint, border);
    for (std::uint32_t gap = 0; gap < gaps; ++gap)
        ASSERT_EQ(get_pixel(gap * 2, 1), gap < paint_stack_capacity ? paint : 0) << gap;
}

}  // namespace
}  // namespace korvane
