// The pixels: the firmware's framebuffer, its shadow in ordinary memory, and the operations that write both.
//
// A pixel is a 32-bit word 0x00RRGGBB; the pixel at (x, y) is word y * pitch + x of either buffer. Every
// operation stores to both buffers and reads the back buffer only, because reading framebuffer memory is
// slow. Coordinates are not clipped to the screen's width and height, callers do that; but a pixel that would
// lie outside the memory of either buffer is dropped, and reads as black.
#pragma once

#include <cstdint>
#include <span>

namespace korvane {

struct Screen {
    std::uint32_t* framebuffer;          // FrameBufferBase of the current mode
    std::uint64_t framebuffer_size;      // its bytes, as the firmware reports them
    std::uint32_t width;                 // HorizontalResolution, in pixels
    std::uint32_t height;                // VerticalResolution, in pixels
    std::uint32_t pitch;                 // PixelsPerScanLine, in pixels
    std::uint32_t* back_buffer;          // the shadow; equal to framebuffer when no memory could be had
    std::uint64_t back_buffer_capacity;  // pixels that it can hold; 0 when it is the framebuffer
    std::uint64_t addressable;           // pixels, from the first on, that lie in the memory of both buffers
    bool cells_wait;                     // text is noted that neither buffer shows yet: screen/noted_cells.h
};
extern Screen screen;

// Draws the text that waits; what draws or reads pixels calls it first, and the operations below do.
void draw_noted_cells();
inline void bring_up_to_date() {
    if (__builtin_expect(screen.cells_wait, false)) draw_noted_cells();
}

// True when the back buffer is memory of its own.
inline bool has_back_buffer() {
    return screen.back_buffer != screen.framebuffer;
}

// The word of the pixel at (x, y); compare with screen.addressable before use.
inline std::uint64_t pixel_index(std::uint32_t x, std::uint32_t y) {
    return std::uint64_t{y} * screen.pitch + x;
}

// For what has asked screen_rectangle() where it may draw.
inline void set_pixel(std::uint32_t x, std::uint32_t y, std::uint32_t colour) {
    const std::uint64_t index = pixel_index(x, y);
    if (index >= screen.addressable) return;
    screen.back_buffer[index] = colour;
    screen.framebuffer[index] = colour;
}

inline std::uint32_t get_pixel(std::uint32_t x, std::uint32_t y) {
    bring_up_to_date();
    const std::uint64_t index = pixel_index(x, y);
    return index < screen.addressable ? screen.back_buffer[index] : 0;
}

// The back buffer's pixels from (x, y) to the right, `count` of them or as many as lie in memory.
std::span<const std::uint32_t> pixel_row(std::uint32_t x, std::uint32_t y, std::uint64_t count);

// Sets `count` pixels from (x, y) to the right.
void fill_pixel_row(std::uint32_t x, std::uint32_t y, std::uint64_t count, std::uint32_t colour);

// Sets a rectangle of `columns` by `rows` pixels with its top left corner at (x, y).
void fill_pixels(std::uint32_t x, std::uint32_t y, std::uint32_t columns, std::uint32_t rows,
                 std::uint32_t colour);

// Stores pixels from memory that belongs to neither buffer, from (x, y) to the right.
void store_pixel_row(std::uint32_t x, std::uint32_t y, std::span<const std::uint32_t> pixels);

// Copies a rectangle of `columns` by `rows` pixels from (x, from_y) up to (x, to_y);
// to_y is not below from_y.
void move_pixels_up(std::uint32_t x, std::uint32_t to_y, std::uint32_t from_y, std::uint32_t columns,
                    std::uint32_t rows);

// Draws one 8x16 cell with its top left corner at (x, y): the pixels of the code's glyph in `foreground`, the
// others in `background`. There is no clipping to the screen. For cells that do not wait.
void draw_glyph(std::uint32_t x, std::uint32_t y, std::uint8_t code, std::uint32_t foreground,
                std::uint32_t background);

// For the cells that do, all of them in memory: the same in the back buffer alone, and what copies a
// rectangle of it into the framebuffer; and move_pixels_up() for a part of the text that waits.
void draw_back_glyph(std::uint32_t x, std::uint32_t y, std::uint8_t code, std::uint32_t foreground,
                     std::uint32_t background);
void show_back_pixels(std::uint32_t x, std::uint32_t y, std::uint32_t columns, std::uint32_t rows);
void move_waiting_pixels_up(std::uint32_t x, std::uint32_t to_y, std::uint32_t from_y, std::uint32_t columns,
                            std::uint32_t rows);

// Takes the framebuffer of a mode: its base, bytes, resolution and pixels per scan line. The pixels are left
// as they are; ensure_back_buffer() must follow before anything is drawn.
void take_framebuffer(std::uint64_t base, std::uint64_t size, std::uint32_t width, std::uint32_t height,
                      std::uint32_t pitch);

// Makes sure that there is a back buffer large enough for the mode. An older one that is too small is not
// given back. Without memory for one the framebuffer takes its place.
[[gnu::cold]] void ensure_back_buffer();

}  // namespace korvane
