#include "statements/graphics/image_array.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "program/parse.h"
#include "screen/colour.h"
#include "screen/four_pixels.h"
#include "screen/framebuffer.h"
#include "statements/graphics/coordinates.h"
#include "values/variables.h"

namespace korvane {

namespace {

constexpr std::uint64_t image_head_size = 8;  // width and height

// An array's elements seen as 32-bit words; array blocks are aligned to 8 bytes.
struct ImageArray {
    std::uint32_t* words;  // null after an error
    std::uint64_t size;    // in bytes

    std::uint32_t* row(std::uint32_t width, std::uint32_t y) const {
        return words + image_head_size / 4 + std::uint64_t{y} * width;
    }
};

// The name of a dimensioned numeric array. Raises "Expected array",
// "Array not dimensioned" and "Type mismatch".
ImageArray parse_image_array(Cursor& cursor) {
    VariableEntry* entry = expect_array(cursor);
    if (entry == nullptr) return {nullptr, 0};
    if (!is_numeric(entry->type)) {
        raise(message::type_mismatch);
        return {nullptr, 0};
    }
    return {reinterpret_cast<std::uint32_t*>(entry->array->elements()),
            element_count(*entry) * storage_size(entry->type)};
}

// True when the array can hold an image of this many pixels each way, which are at most the screen's.
bool holds(const ImageArray& array, std::uint64_t width, std::uint64_t height) {
    return array.size >= image_head_size && width * height <= (array.size - image_head_size) / 4;
}

void store_image(const ImageArray& array, const PixelRectangle& area) {
    const auto width = static_cast<std::uint32_t>(area.right - area.left + 1);
    const auto height = static_cast<std::uint32_t>(area.bottom - area.top + 1);
    array.words[0] = width;
    array.words[1] = height;
    for (std::uint32_t y = 0; y < height; ++y) {
        const auto screen_y = static_cast<std::uint32_t>(area.top) + y;
        const std::span<const std::uint32_t> pixels =
            pixel_row(static_cast<std::uint32_t>(area.left), screen_y, width);
        std::uint32_t* row = array.row(width, y);
        std::size_t x = 0;
        for (; x + 4 <= pixels.size(); x += 4)
            store_four(row + x, load_four(pixels.data() + x) & colour_mask);
        for (; x < width; ++x)
            row[x] = x < pixels.size() ? pixels[x] & colour_mask : 0;
    }
}

// The mode of PUT as its keyword. Anything that is no mode raises "Syntax Error".
std::uint8_t parse_mode(Cursor& cursor) {
    if (!accept(cursor, ',')) return KW_XOR;
    const std::uint8_t mode = cursor->kind;
    if (mode != KW_PSET && mode != KW_PRESET && mode != KW_AND && mode != KW_OR && mode != KW_XOR) {
        raise(message::syntax_error);
        return 0;
    }
    ++cursor;
    return mode;
}

// How a stored pixel p meets the screen's pixel s: with t = s or `ignored`, the new pixel is
// (p and t and `common`) xor ((p xor t) and `differing`).
struct Combination {
    std::uint32_t ignored;
    std::uint32_t common;
    std::uint32_t differing;

    // One pixel or four of them.
    template <typename Pixels>
    Pixels apply(Pixels stored, Pixels on_screen) const {
        const Pixels other = on_screen | ignored;
        return (stored & other & common) ^ ((stored ^ other) & differing);
    }
};

Combination combination_of(std::uint8_t mode) {
    switch (mode) {
        case KW_PRESET:
            return {0xFFFFFFFF, 0, colour_mask};
        case KW_AND:
            return {0, colour_mask, 0};
        case KW_OR:
            return {0, colour_mask, colour_mask};
        default:
            return {0, 0, colour_mask};
    }
}

// Combines one row of an image with the screen at (x, y).
void put_row(std::span<const std::uint32_t> image, std::uint32_t x, std::uint32_t y, std::uint8_t mode) {
    if (mode == KW_PSET) {
        store_pixel_row(x, y, image);  // the words as they are, their top bytes included, which is deliberate
        return;
    }
    const Combination combination = combination_of(mode);
    std::uint32_t part[256];
    while (!image.empty()) {
        const std::size_t count = std::min(image.size(), std::size(part));
        const std::span<const std::uint32_t> below = pixel_row(x, y, count);
        std::size_t i = 0;
        for (; i + 4 <= below.size(); i += 4)
            store_four(part + i, combination.apply(load_four(&image[i]), load_four(&below[i])));
        for (; i < below.size(); ++i)
            part[i] = combination.apply(image[i], below[i]);
        store_pixel_row(x, y, {part, below.size()});
        image = image.subspan(count);
        x += static_cast<std::uint32_t>(count);
    }
}

}  // namespace

void do_get_graphics(Cursor& cursor) {
    ++cursor;
    Point first;
    Point second;
    if (!gfx_parse_point(cursor, gfx_settle_last_point(), first)) return;
    if (!expect(cursor, '-', message::expected_dash)) return;
    if (!gfx_parse_point(cursor, first, second) || !expect_comma(cursor)) return;
    const PixelRectangle area = {std::min(first.x, second.x), std::min(first.y, second.y),
                                 std::max(first.x, second.x), std::max(first.y, second.y)};
    if (area.left < 0 || area.top < 0 || area.right >= screen.width || area.bottom >= screen.height) {
        raise(message::illegal_function_call);
        return;
    }
    const ImageArray array = parse_image_array(cursor);
    if (error_pending()) return;
    if (!holds(array, static_cast<std::uint64_t>(area.right - area.left + 1),
               static_cast<std::uint64_t>(area.bottom - area.top + 1))) {
        raise(message::illegal_function_call);
        return;
    }
    store_image(array, area);
    gfx_set_last_point(first);
}

void do_put_graphics(Cursor& cursor) {
    ++cursor;
    Point corner;
    if (!gfx_parse_point(cursor, gfx_settle_last_point(), corner) || !expect_comma(cursor)) return;
    const ImageArray array = parse_image_array(cursor);
    if (error_pending()) return;
    const std::uint8_t mode = parse_mode(cursor);
    if (error_pending()) return;
    const bool has_head = array.size >= image_head_size;
    const std::uint32_t width = has_head ? array.words[0] : 0;
    const std::uint32_t height = has_head ? array.words[1] : 0;
    if (width == 0 || height == 0 || width > screen.width || height > screen.height || corner.x < 0 ||
        corner.y < 0 || corner.x > screen.width - width || corner.y > screen.height - height ||
        !holds(array, width, height)) {
        raise(message::illegal_function_call);
        return;
    }
    for (std::uint32_t y = 0; y < height; ++y) {
        put_row({array.row(width, y), width}, static_cast<std::uint32_t>(corner.x),
                static_cast<std::uint32_t>(corner.y) + y, mode);
    }
}

}  // namespace korvane
