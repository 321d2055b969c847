// The clipped pixel, and what every drawing algorithm needs to decide its clipping once for a whole figure.
//
// Drawing outside the screen or the viewport is never an error. Coordinates are physical pixels and may be
// any 64-bit value.
#pragma once

#include <cstdint>

#include "screen/framebuffer.h"
#include "screen/graphics.h"

namespace korvane {

// Sums and differences that stop at the ends of the INT64 range. A coordinate that far out is off the screen
// either way, so the pixels drawn are the same.
std::int64_t saturating_add(std::int64_t left, std::int64_t right);
std::int64_t saturating_subtract(std::int64_t left, std::int64_t right);

// The screen's pixels, less those rows that do not lie wholly in the memory of both buffers. Empty when there
// are none. Who asks is about to draw or to look, so they are up to date.
PixelRectangle screen_rectangle();

// What most statements may touch: screen_rectangle(), narrowed to the viewport when it is active.
PixelRectangle gfx_clip();

// True when the rectangle is not empty and lies wholly inside `clip`.
bool lies_inside(const PixelRectangle& rectangle, const PixelRectangle& clip);

// One pixel in both buffers; nothing happens outside gfx_clip().
void gfx_plot(std::int64_t x, std::int64_t y, std::uint32_t colour);

// The part of an inclusive rectangle that lies inside `clip`, filled.
void fill_clipped(const PixelRectangle& rectangle, const PixelRectangle& clip, std::uint32_t colour);

// Both buffers, for loops that have clipped beforehand.
struct PixelWriter {
    std::uint32_t* framebuffer = screen.framebuffer;
    std::uint32_t* back_buffer = screen.back_buffer;

    void put(std::uint64_t index, std::uint32_t colour) const {
        back_buffer[index] = colour;
        framebuffer[index] = colour;
    }
};

// Pixel steps along one axis, counted from 0, both ends included; empty when last < first.
struct StepRange {
    std::uint64_t first;
    std::uint64_t last;

    bool empty() const { return last < first; }
};

// Which of the steps 0 to `length` keep a coordinate inside low..high (screen coordinates, low <= high, both
// at least 0) that starts at `start` and moves by one a step, forwards or backwards.
StepRange steps_inside(std::int64_t start, std::uint64_t length, bool forward, std::int64_t low,
                       std::int64_t high);

}  // namespace korvane
