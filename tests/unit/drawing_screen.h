// A screen in ordinary memory for tests of the drawing code, with guard words around both buffers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "screen/framebuffer.h"
#include "screen/graphics.h"

namespace korvane {

class DrawingScreen {
  public:
    static constexpr std::uint32_t unseen = 0xDEADBEEF;  // guard words, and the words between width and pitch

    DrawingScreen(std::uint32_t width, std::uint32_t height, std::uint32_t pitch)
        : framebuffer_(guard * 2 + std::size_t{pitch} * height, unseen), back_buffer_(framebuffer_) {
        screen = {.framebuffer = framebuffer_.data() + guard,
                  .framebuffer_size = std::uint64_t{pitch} * height * 4,
                  .width = width,
                  .height = height,
                  .pitch = pitch,
                  .back_buffer = back_buffer_.data() + guard,
                  .back_buffer_capacity = std::uint64_t{pitch} * height,
                  .addressable = std::uint64_t{pitch} * height,
                  .cells_wait = false};
        gfx_start();
        clear();
    }

    ~DrawingScreen() { screen = {}; }
    DrawingScreen(const DrawingScreen&) = delete;
    DrawingScreen& operator=(const DrawingScreen&) = delete;

    void clear(std::uint32_t colour = 0) {
        for (std::uint32_t y = 0; y < screen.height; ++y)
            for (std::uint32_t x = 0; x < screen.width; ++x)
                set_pixel(x, y, colour);
    }

    // The visible pixels of the back buffer, row by row.
    std::vector<std::uint32_t> pixels() const {
        std::vector<std::uint32_t> result;
        for (std::uint32_t y = 0; y < screen.height; ++y) {
            const std::uint32_t* row = screen.back_buffer + pixel_index(0, y);
            result.insert(result.end(), row, row + screen.width);
        }
        return result;
    }

    bool buffers_are_equal() const { return framebuffer_ == back_buffer_; }

    // True when nothing outside the visible pixels was written in either buffer.
    bool unseen_words_are_untouched() const {
        for (const std::vector<std::uint32_t>* buffer : {&framebuffer_, &back_buffer_}) {
            for (std::size_t i = 0; i < buffer->size(); ++i) {
                const bool visible =
                    i >= guard && i < buffer->size() - guard && (i - guard) % screen.pitch < screen.width;
                if (!visible && (*buffer)[i] != unseen) return false;
            }
        }
        return true;
    }

  private:
    static constexpr std::size_t guard = 4096;

    std::vector<std::uint32_t> framebuffer_;
    std::vector<std::uint32_t> back_buffer_;
};

}  // namespace korvane
