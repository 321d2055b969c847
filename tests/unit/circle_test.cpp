#include "statements/graphics/circle.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string_view>

#include "drawing_screen.h"
#include "screen/plot.h"

namespace korvane {
namespace {

constexpr std::uint32_t ink = 0x123456;

// The midpoint algorithm as it is usually written, each of the eight points clipped by itself.
std::vector<std::uint32_t> reference_circle(Point centre, std::int64_t radius, const PixelRectangle& clip) {
    std::vector<std::uint32_t> pixels(std::size_t{screen.width} * screen.height, 0);
    const auto plot = [&](std::int64_t x, std::int64_t y) {
        if (!clip.contains(x, y)) return;
        pixels[static_cast<std::size_t>(y) * screen.width + static_cast<std::size_t>(x)] = ink;
    };
    std::int64_t x = radius;
    std::int64_t y = 0;
    std::int64_t d = 1 - radius;
    while (x >= y) {
        for (const std::int64_t sx : {-1, 1}) {
            for (const std::int64_t sy : {-1, 1}) {
                plot(centre.x + sx * x, centre.y + sy * y);
                plot(centre.x + sx * y, centre.y + sy * x);
            }
        }
        y += 1;
        if (d < 0) {
            d += 2 * y + 1;
        } else {
            x -= 1;
            d += 2 * (y - x) + 1;
        }
    }
    return pixels;
}

void expect_reference_circle(DrawingScreen& memory, Point centre, std::int64_t radius) {
    memory.clear();
    gfx_circle(centre, radius, ink);
    ASSERT_EQ(memory.pixels(), reference_circle(centre, radius, gfx_clip()))
        << "centre " << centre.x << "," << centre.y << " radius " << radius;
    ASSERT_TRUE(memory.buffers_are_equal());
}

// Worked out by hand: r = 4 visits (4,0) (4,1) (3,2) (3,3), then x < y.
TEST(GfxCircle, RadiusFourHasTheseTwentyFourPixels) {
    constexpr std::string_view picture =
        "...###..."
        ".##...##."
        ".#.....#."
        "#.......#"
        "#.......#"
        "#.......#"
        ".#.....#."
        ".##...##."
        "...###...";
    DrawingScreen memory(9, 9, 9);
    gfx_circle({4, 4}, 4, ink);
    for (std::uint32_t y = 0; y < 9; ++y)
        for (std::uint32_t x = 0; x < 9; ++x)
            ASSERT_EQ(get_pixel(x, y), picture[y * 9 + x] == '#' ? ink : 0) << x << "," << y;
}

TEST(GfxCircle, RadiusZeroIsTheCentre) {
    DrawingScreen memory(5, 5, 5);
    gfx_circle({2, 3}, 0, ink);
    for (std::uint32_t y = 0; y < 5; ++y)
        for (std::uint32_t x = 0; x < 5; ++x)
            ASSERT_EQ(get_pixel(x, y), x == 2 && y == 3 ? ink : 0);
}

TEST(GfxCircle, EveryRadiusAndPlaceFollowsTheMidpointAlgorithm) {
    DrawingScreen memory(31, 23, 40);
    for (std::int64_t radius = 0; radius < 20; ++radius) {
        for (std::int64_t y = -8; y < 31; ++y)
            for (std::int64_t x = -8; x < 39; x += 3)
                expect_reference_circle(memory, {x, y}, radius);
    }
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

TEST(GfxCircle, LargeCirclesShowTheirPartOfTheWholeCircle) {
    DrawingScreen memory(31, 23, 40);
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int64_t> radii(100, 30000);
    std::uniform_real_distribution<double> angles(0, 6.2831853);
    for (int i = 0; i < 600; ++i) {
        if (i == 300) {
            graphics.viewport_active = true;
            graphics.viewport = {4, 6, 25, 19};
        }
        const std::int64_t radius = radii(random);
        const double angle = angles(random);  // the circle passes through the middle of the screen
        expect_reference_circle(
            memory,
            {15 + static_cast<std::int64_t>(static_cast<double>(radius) * __builtin_cos(angle)),
             11 + static_cast<std::int64_t>(static_cast<double>(radius) * __builtin_sin(angle))},
            radius);
    }
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

TEST(GfxCircle, TheLargestRadiusTakesNoTime) {
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    DrawingScreen memory(31, 23, 40);
    // Touches the screen's left edge from the left: a vertical line as far as the screen can tell.
    gfx_circle({-highest, 11}, highest, ink);
    for (std::uint32_t y = 0; y < 23; ++y)
        for (std::uint32_t x = 0; x < 31; ++x)
            ASSERT_EQ(get_pixel(x, y), x == 0 ? ink : 0);
    gfx_circle({0, 0}, highest, ink);
    gfx_circle({highest, highest}, highest, ink);
    gfx_circle({std::numeric_limits<std::int64_t>::min(), 0}, highest, ink);
    EXPECT_TRUE(memory.unseen_words_are_untouched());
}

}  // namespace
}  // namespace korvane
