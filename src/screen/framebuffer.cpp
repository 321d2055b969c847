#include "screen/framebuffer.h"

#include <algorithm>
#include <array>

#include "platform/firmware.h"
#include "platform/memory.h"
#include "screen/font.h"
#include "screen/four_pixels.h"

namespace korvane {

Screen screen;

namespace {

constexpr std::uint64_t pixel_size = 4;
constexpr std::uint64_t pixels_per_page = uefi::page_size / pixel_size;

// For each half of a glyph row, which of its four pixels are set.
constexpr std::array<std::array<std::uint32_t, 4>, 16> make_glyph_masks() {
    std::array<std::array<std::uint32_t, 4>, 16> masks{};
    for (std::uint32_t pattern = 0; pattern < 16; ++pattern)
        for (std::uint32_t pixel = 0; pixel < 4; ++pixel)
            masks[pattern][pixel] = (pattern & (8u >> pixel)) != 0 ? 0xFFFFFFFF : 0;
    return masks;
}
alignas(16) constexpr std::array<std::array<std::uint32_t, 4>, 16> glyph_masks = make_glyph_masks();

inline FourPixels glyph_half(std::uint32_t pattern, FourPixels background, FourPixels difference) {
    return background ^ (load_four(glyph_masks[pattern].data()) & difference);
}

void fill_words(std::uint32_t* place, std::uint64_t count, std::uint32_t colour) {
    const FourPixels filler = four_of(colour);
    for (; count >= 16; count -= 16, place += 16) {
        store_four(place, filler);
        store_four(place + 4, filler);
        store_four(place + 8, filler);
        store_four(place + 12, filler);
    }
    for (; count >= 4; count -= 4, place += 4)
        store_four(place, filler);
    for (; count != 0; --count, ++place)
        *place = colour;
}

// Of `count` pixels from a word on, those that lie in memory.
std::uint64_t count_in_memory(std::uint64_t index, std::uint64_t count) {
    return index >= screen.addressable ? 0 : std::min(count, screen.addressable - index);
}

// Fills words of both buffers; all of them lie in memory.
void fill_both(std::uint64_t index, std::uint64_t count, std::uint32_t colour) {
    fill_words(screen.back_buffer + index, count, colour);
    if (has_back_buffer()) fill_words(screen.framebuffer + index, count, colour);
}

// Copies words of the back buffer down in memory, into both buffers.
// What lies outside of memory reads as black.
void move_words(std::uint64_t to, std::uint64_t from, std::uint64_t count) {
    count = count_in_memory(to, count);
    const std::uint64_t readable = count_in_memory(from, count);
    move_bytes(screen.back_buffer + to, screen.back_buffer + from, readable * pixel_size);
    if (has_back_buffer())
        copy_bytes(screen.framebuffer + to, screen.back_buffer + to, readable * pixel_size);
    fill_both(to + readable, count - readable, 0);
}

void update_addressable() {
    screen.addressable = screen.framebuffer_size / pixel_size;
    if (has_back_buffer()) screen.addressable = std::min(screen.addressable, screen.back_buffer_capacity);
}

}  // namespace

std::span<const std::uint32_t> pixel_row(std::uint32_t x, std::uint32_t y, std::uint64_t count) {
    bring_up_to_date();
    const std::uint64_t index = pixel_index(x, y);
    count = count_in_memory(index, count);
    if (count == 0) return {};
    return {screen.back_buffer + index, static_cast<std::size_t>(count)};
}

void fill_pixel_row(std::uint32_t x, std::uint32_t y, std::uint64_t count, std::uint32_t colour) {
    bring_up_to_date();
    const std::uint64_t index = pixel_index(x, y);
    fill_both(index, count_in_memory(index, count), colour);
}

void fill_pixels(std::uint32_t x, std::uint32_t y, std::uint32_t columns, std::uint32_t rows,
                 std::uint32_t colour) {
    bring_up_to_date();
    if (columns == screen.pitch) {
        // Whole scan lines follow each other without a gap.
        fill_pixel_row(x, y, std::uint64_t{columns} * rows, colour);
        return;
    }
    // Ends at the end of memory too: a mode may report any number of rows.
    std::uint64_t index = pixel_index(x, y);
    for (; rows != 0 && index < screen.addressable; --rows, index += screen.pitch)
        fill_both(index, count_in_memory(index, columns), colour);
}

void store_pixel_row(std::uint32_t x, std::uint32_t y, std::span<const std::uint32_t> pixels) {
    bring_up_to_date();
    const std::uint64_t index = pixel_index(x, y);
    const std::uint64_t count = count_in_memory(index, pixels.size());
    copy_bytes(screen.back_buffer + index, pixels.data(), count * pixel_size);
    if (has_back_buffer()) copy_bytes(screen.framebuffer + index, pixels.data(), count * pixel_size);
}

void move_pixels_up(std::uint32_t x, std::uint32_t to_y, std::uint32_t from_y, std::uint32_t columns,
                    std::uint32_t rows) {
    bring_up_to_date();
    move_waiting_pixels_up(x, to_y, from_y, columns, rows);
}

void move_waiting_pixels_up(std::uint32_t x, std::uint32_t to_y, std::uint32_t from_y, std::uint32_t columns,
                            std::uint32_t rows) {
    // Row by row: what was just moved in the back buffer is still
    // in the processor's cache when it is copied on.
    for (std::uint32_t row = 0; row < rows; ++row)
        move_words(pixel_index(x, to_y + row), pixel_index(x, from_y + row), columns);
}

void draw_glyph(std::uint32_t x, std::uint32_t y, std::uint8_t code, std::uint32_t foreground,
                std::uint32_t background) {
    const std::uint8_t* glyph = font_glyphs[code];
    const std::uint64_t pitch = screen.pitch;
    const std::uint64_t index = pixel_index(x, y);
    const std::uint64_t last = index + pitch * (glyph_height - 1) + glyph_width - 1;
    const bool in_memory = last < screen.addressable;
    const FourPixels base = four_of(background);
    const FourPixels difference = four_of(foreground ^ background);
    std::uint32_t* back = screen.back_buffer + index;
    std::uint32_t* front = screen.framebuffer + index;
    for (std::uint32_t row = 0; row < glyph_height; ++row, back += pitch, front += pitch) {
        const FourPixels left = glyph_half(glyph[row] >> 4, base, difference);
        const FourPixels right = glyph_half(glyph[row] & 15, base, difference);
        if (in_memory) {
            store_four(back, left);
            store_four(back + 4, right);
            store_four(front, left);
            store_four(front + 4, right);
        } else {
            std::uint32_t pixels[glyph_width];
            store_four(pixels, left);
            store_four(pixels + 4, right);
            store_pixel_row(x, y + row, pixels);
        }
    }
}

void draw_back_glyph(std::uint32_t x, std::uint32_t y, std::uint8_t code, std::uint32_t foreground,
                     std::uint32_t background) {
    const FourPixels base = four_of(background);
    const FourPixels difference = four_of(foreground ^ background);
    std::uint32_t* back = screen.back_buffer + pixel_index(x, y);
    for (const std::uint8_t row : font_glyphs[code]) {
        store_four(back, glyph_half(row >> 4, base, difference));
        store_four(back + 4, glyph_half(row & 15, base, difference));
        back += screen.pitch;
    }
}

void show_back_pixels(std::uint32_t x, std::uint32_t y, std::uint32_t columns, std::uint32_t rows) {
    if (!has_back_buffer()) return;
    for (std::uint32_t row = 0; row < rows; ++row) {
        const std::uint64_t index = pixel_index(x, y + row);
        copy_bytes(screen.framebuffer + index, screen.back_buffer + index, columns * pixel_size);
    }
}

void take_framebuffer(std::uint64_t base, std::uint64_t size, std::uint32_t width, std::uint32_t height,
                      std::uint32_t pitch) {
    auto* const framebuffer = reinterpret_cast<std::uint32_t*>(base);
    // A back buffer that is the old framebuffer must not be taken for memory of its own.
    if (!has_back_buffer()) screen.back_buffer = framebuffer;
    screen.framebuffer = framebuffer;
    screen.framebuffer_size = size;
    screen.width = width;
    screen.height = height;
    screen.pitch = pitch;
    screen.cells_wait = false;
    update_addressable();
}

void ensure_back_buffer() {
    const std::uint64_t needed = std::uint64_t{screen.pitch} * screen.height;
    if (has_back_buffer() && needed <= screen.back_buffer_capacity) return;

    const std::uint64_t pages = needed / pixels_per_page + (needed % pixels_per_page != 0 ? 1 : 0);
    uefi::PhysicalAddress memory = 0;
    const uefi::Status status = firmware.boot->AllocatePages(uefi::AllocateType::AllocateAnyPages,
                                                             uefi::MemoryType::EfiLoaderData, pages, &memory);
    if (uefi::is_error(status)) {
        screen.back_buffer = screen.framebuffer;
        screen.back_buffer_capacity = 0;
    } else {
        screen.back_buffer = reinterpret_cast<std::uint32_t*>(memory);
        screen.back_buffer_capacity = pages * pixels_per_page;
        // The rest of the last page belongs to no pixel of this mode, but a numbered window may reach it.
        fill_words(screen.back_buffer + needed, screen.back_buffer_capacity - needed, 0);
    }
    update_addressable();
}

}  // namespace korvane
