#include "screen/framebuffer.h"

#include <gtest/gtest.h>

#include <array>

#include "memory_screen.h"
#include "screen/font.h"

namespace korvane {
namespace {

using test::MemoryScreen;

TEST(Framebuffer, PixelIsWordYTimesPitchPlusXOfBothBuffers) {
    MemoryScreen memory(20, 10, 24);
    set_pixel(7, 3, 0x123456);
    EXPECT_EQ(screen.framebuffer[3 * 24 + 7], 0x123456u);
    EXPECT_EQ(screen.back_buffer[3 * 24 + 7], 0x123456u);
    EXPECT_EQ(get_pixel(7, 3), 0x123456u);
}

TEST(Framebuffer, PixelsAreReadFromTheBackBuffer) {
    MemoryScreen memory(20, 10);
    screen.framebuffer[25] = 0xFF0000;
    screen.back_buffer[25] = 0x00FF00;
    EXPECT_EQ(get_pixel(5, 1), 0x00FF00u);
    EXPECT_EQ(pixel_row(5, 1, 1)[0], 0x00FF00u);
}

TEST(Framebuffer, BackBufferHasWholePagesOf1024Pixels) {
    MemoryScreen memory(100, 41, 100);
    EXPECT_EQ(screen.back_buffer_capacity, 5u * 1024);  // 4100 pixels
    memory.set_mode(64, 64, 64);
    EXPECT_EQ(screen.back_buffer_capacity, 5u * 1024);  // still large enough, kept
    memory.set_mode(64, 80, 64);
    EXPECT_EQ(screen.back_buffer_capacity, 5u * 1024);  // 5120 pixels: fits exactly
    memory.set_mode(64, 81, 64);
    EXPECT_EQ(screen.back_buffer_capacity, 6u * 1024);
}

TEST(Framebuffer, WithoutMemoryTheFramebufferIsItsOwnBackBuffer) {
    MemoryScreen memory(64, 64);
    MemoryScreen::pages_available = false;
    memory.set_mode(640, 480);
    EXPECT_EQ(screen.back_buffer, screen.framebuffer);
    EXPECT_EQ(screen.back_buffer_capacity, 0u);
    fill_pixels(0, 16, 640, 16, 0xAABBCC);
    move_pixels_up(0, 0, 16, 640, 16);
    EXPECT_EQ(memory.front(639, 0), 0xAABBCCu);

    // The next mode change tries again.
    MemoryScreen::pages_available = true;
    memory.set_mode(640, 480);
    EXPECT_NE(screen.back_buffer, screen.framebuffer);
    EXPECT_EQ(screen.back_buffer_capacity, 300u * 1024);
}

TEST(Framebuffer, BlackReachesTheUnseenEndOfScanLines) {
    MemoryScreen memory(20, 10, 24);
    for (std::uint64_t i = 0; i < 240; ++i) {
        EXPECT_EQ(screen.framebuffer[i], 0u);
        EXPECT_EQ(screen.back_buffer[i], 0u);
    }
    EXPECT_TRUE(memory.guard_is_intact());
}

TEST(Framebuffer, FillStaysInsideItsRectangle) {
    MemoryScreen memory(50, 20, 64);
    fill_pixels(3, 2, 41, 5, 0x010203);
    for (std::uint32_t y = 0; y < 20; ++y) {
        for (std::uint32_t x = 0; x < 64; ++x) {
            const bool inside = x >= 3 && x < 44 && y >= 2 && y < 7;
            ASSERT_EQ(memory.front(x, y), inside ? 0x010203u : 0u) << x << "," << y;
            ASSERT_EQ(memory.back(x, y), inside ? 0x010203u : 0u) << x << "," << y;
        }
    }
}

TEST(Framebuffer, FillOfWholeScanLinesHasNoGaps) {
    MemoryScreen memory(64, 20);
    fill_pixels(0, 2, 64, 5, 7);
    EXPECT_EQ(memory.front(63, 1), 0u);
    EXPECT_EQ(memory.front(0, 2), 7u);
    EXPECT_EQ(memory.front(63, 6), 7u);
    EXPECT_EQ(memory.front(0, 7), 0u);
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(Framebuffer, StoredRowIsCutAtTheEndOfMemory) {
    MemoryScreen memory(8, 2);
    const std::array<std::uint32_t, 6> pixels = {1, 2, 3, 4, 5, 6};
    store_pixel_row(5, 1, pixels);
    EXPECT_EQ(memory.front(5, 1), 1u);
    EXPECT_EQ(memory.front(7, 1), 3u);
    EXPECT_TRUE(memory.guard_is_intact());
    EXPECT_EQ(pixel_row(5, 1, 6).size(), 3u);
    EXPECT_TRUE(pixel_row(0, 2, 6).empty());
}

TEST(Framebuffer, NothingIsStoredOutsideOfMemoryAndItReadsAsBlack) {
    MemoryScreen memory(32, 32);
    set_pixel(31, 31, 5);
    set_pixel(32, 31, 6);
    set_pixel(0xFFFFFFFF, 0xFFFFFFFF, 6);
    fill_pixel_row(30, 31, 0xFFFFFFFF, 9);
    fill_pixels(0, 30, 32, 0x10000, 8);
    draw_glyph(28, 28, 219, 1, 2);
    draw_glyph(0, 4000, 219, 1, 2);
    EXPECT_EQ(get_pixel(32, 31), 0u);
    EXPECT_TRUE(memory.guard_is_intact());
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(Framebuffer, ReportedSizeSmallerThanTheModeLimitsDrawing) {
    MemoryScreen memory(32, 32, 32, 1000);
    fill_pixels(0, 0, 32, 32, 3);
    EXPECT_EQ(screen.framebuffer[999], 3u);
    EXPECT_TRUE(memory.guard_is_intact());
}

TEST(Framebuffer, GlyphRowsAreTheFontsBits) {
    MemoryScreen memory(40, 40, 48);
    for (std::uint32_t code = 0; code < 256; ++code) {
        draw_glyph(5, 3, static_cast<std::uint8_t>(code), 0xFEDCBA, 0x135790);
        for (std::uint32_t y = 0; y < 16; ++y) {
            for (std::uint32_t x = 0; x < 8; ++x) {
                const bool is_set = (font_glyphs[code][y] >> (7 - x) & 1) != 0;
                ASSERT_EQ(memory.front(5 + x, 3 + y), is_set ? 0xFEDCBAu : 0x135790u) << code;
            }
        }
    }
    EXPECT_EQ(memory.front(4, 3), 0u);
    EXPECT_EQ(memory.front(13, 3), 0u);
    EXPECT_EQ(memory.front(5, 19), 0u);
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(Framebuffer, GlyphPartlyOutsideOfMemoryIsDrawnAsFarAsItGoes) {
    MemoryScreen memory(16, 20);
    draw_glyph(8, 10, 219, 0xFFFFFF, 0);
    EXPECT_EQ(memory.front(15, 19), 0xFFFFFFu);
    EXPECT_EQ(memory.front(7, 19), 0u);
    EXPECT_TRUE(memory.guard_is_intact());
}

TEST(Framebuffer, MovedRowsComeFromTheBackBuffer) {
    MemoryScreen memory(16, 8);
    for (std::uint32_t y = 0; y < 8; ++y)
        fill_pixel_row(0, y, 16, y + 1);
    screen.framebuffer[3 * 16 + 4] = 0x777777;  // never to be read
    move_pixels_up(4, 1, 2, 8, 6);
    for (std::uint32_t y = 1; y < 7; ++y) {
        EXPECT_EQ(memory.front(3, y), y + 1);
        EXPECT_EQ(memory.front(4, y), y + 2);
        EXPECT_EQ(memory.front(11, y), y + 2);
        EXPECT_EQ(memory.front(12, y), y + 1);
    }
    EXPECT_EQ(memory.front(4, 7), 8u);
    EXPECT_TRUE(memory.buffers_agree());
}

TEST(Framebuffer, RowsMovedInFromOutsideOfMemoryAreBlack) {
    MemoryScreen memory(16, 8);
    fill_pixels(0, 0, 16, 8, 5);
    move_pixels_up(0, 4, 8, 16, 8);
    EXPECT_EQ(memory.front(15, 3), 5u);
    EXPECT_EQ(memory.front(0, 4), 0u);
    EXPECT_EQ(memory.front(15, 7), 0u);
    EXPECT_TRUE(memory.guard_is_intact());
    EXPECT_TRUE(memory.buffers_agree());
}

}  // namespace
}  // namespace korvane
