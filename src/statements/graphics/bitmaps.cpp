#include "statements/graphics/bitmaps.h"

#include <algorithm>

#include "platform/memory.h"
#include "program/arenas.h"
#include "program/parse.h"
#include "screen/colour.h"
#include "screen/four_pixels.h"
#include "screen/plot.h"
#include "statements/files/file_name.h"
#include "statements/graphics/bmp_file.h"
#include "statements/graphics/coordinates.h"
#include "values/evaluator.h"

namespace korvane {

Bitmaps bitmaps;

namespace {

// A slot number; outside of 0 to 31 raises "Illegal function call".
std::int64_t parse_slot(Cursor& cursor) {
    const std::int64_t slot = evaluate_integer(cursor);
    if (!error_pending() && (slot < 0 || slot >= bitmap_slot_count)) raise(message::illegal_function_call);
    return slot;
}

// One visible row: to the framebuffer only.
void show_row(std::uint32_t* target, const std::uint32_t* pixels, std::uint64_t count) {
    copy_bytes(target, pixels, count * sizeof *pixels);
}

void show_row_except(std::uint32_t* target, const std::uint32_t* pixels, std::uint64_t count,
                     std::uint32_t transparent) {
    std::uint64_t i = 0;
    while (i < count) {
        // Most of a picture is shown or hidden in larger pieces.
        if (count - i >= 4) {
            const FourPixels four = load_four(pixels + i);
            const std::uint32_t hidden = lane_bits(FourPixels(four == transparent));
            if (hidden == no_pixel) store_four(target + i, four);
            if (hidden == no_pixel || hidden == all_four_pixels) {
                i += 4;
                continue;
            }
        }
        if (pixels[i] != transparent) target[i] = pixels[i];
        ++i;
    }
}

void show_bitmap(const BitmapSlot& bitmap, Point corner, const std::uint32_t* transparent) {
    const PixelRectangle area = screen_rectangle();
    const std::int64_t left = std::max(corner.x, area.left);
    const std::int64_t top = std::max(corner.y, area.top);
    const std::int64_t right = std::min(saturating_add(corner.x, std::int64_t{bitmap.width} - 1), area.right);
    const std::int64_t bottom =
        std::min(saturating_add(corner.y, std::int64_t{bitmap.height} - 1), area.bottom);
    if (left > right || top > bottom) return;
    const auto count = static_cast<std::uint64_t>(right - left + 1);
    for (std::int64_t y = top; y <= bottom; ++y) {
        const std::uint32_t* pixels =
            bitmap.pixels + (y - corner.y) * std::int64_t{bitmap.width} + (left - corner.x);
        std::uint32_t* target =
            screen.framebuffer + pixel_index(static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(y));
        if (transparent == nullptr)
            show_row(target, pixels, count);
        else
            show_row_except(target, pixels, count, *transparent);
    }
}

}  // namespace

void initialize_bitmaps() {
    bitmaps = Bitmaps{};
}

const BitmapSlot* find_bitmap(std::int64_t slot) {
    if (slot < 0 || slot >= bitmap_slot_count) return nullptr;
    const BitmapSlot& bitmap = bitmaps.slots[static_cast<std::size_t>(slot)];
    return bitmap.loaded && bitmap.clears == arenas.clears ? &bitmap : nullptr;
}

void do_loadbmp(Cursor& cursor) {
    ++cursor;
    const std::int64_t slot = parse_slot(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const FileName name = read_file_name(cursor);
    if (error_pending()) return;
    const BmpImage image = load_bmp(name.view());
    if (error_pending()) return;
    bitmaps.slots[static_cast<std::size_t>(slot)] = {.pixels = image.pixels,
                                                     .width = image.width,
                                                     .height = image.height,
                                                     .loaded = true,
                                                     .clears = arenas.clears};
}

void do_bitblt(Cursor& cursor) {
    ++cursor;
    const std::int64_t slot = evaluate_integer(cursor);
    if (error_pending()) return;
    const BitmapSlot* bitmap = find_bitmap(slot);
    if (bitmap == nullptr) {
        raise(message::illegal_function_call);
        return;
    }
    Point corner;
    if (!expect_comma(cursor)) return;
    corner.x = evaluate_integer(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    corner.y = evaluate_integer(cursor);
    if (error_pending()) return;
    const bool has_transparent = accept(cursor, ',');
    std::uint32_t transparent = 0;
    if (has_transparent) {
        transparent = static_cast<std::uint32_t>(evaluate_integer(cursor) & colour_mask);
        if (error_pending()) return;
    }
    gfx_settle_last_point();
    show_bitmap(*bitmap, corner, has_transparent ? &transparent : nullptr);
}

}  // namespace korvane
