#include "statements/graphics/paint.h"

#include <bit>

#include "program/errors.h"
#include "screen/colour.h"
#include "screen/console.h"
#include "screen/four_pixels.h"
#include "screen/plot.h"
#include "statements/graphics/coordinates.h"
#include "statements/graphics/graphics_colour.h"

namespace korvane {

namespace {

struct Seed {
    std::uint32_t x;
    std::uint32_t y;
};

struct PaintStack {
    std::uint32_t count;  // seeds waiting; 0 between fills
    Seed seeds[paint_stack_capacity];
};
PaintStack paint_stack;

// One fill under way.
struct Fill {
    std::uint32_t paint;
    std::uint32_t border;
    std::uint32_t width;  // the area that may be filled
    std::uint32_t height;

    bool stops(std::uint32_t pixel) const {
        const std::uint32_t colour = pixel & colour_mask;
        return colour == border || colour == paint;
    }

    // Which of four pixels do so, as bits.
    std::uint32_t stopping(const std::uint32_t* pixels) const {
        const FourPixels colours = load_four(pixels) & colour_mask;
        return lane_bits(FourPixels((colours == border) | (colours == paint)));
    }
};

void push(std::uint32_t x, std::uint32_t y) {
    if (paint_stack.count < paint_stack_capacity) paint_stack.seeds[paint_stack.count++] = {x, y};
}

const std::uint32_t* back_row(std::uint32_t y) {
    return screen.back_buffer + pixel_index(0, y);
}

// The first column from `x` on, up to `end`, whose pixel stops the fill, or with `wanted` false does not;
// `end` when there is none.
std::uint32_t find_column(const Fill& fill, const std::uint32_t* row, std::uint32_t x, std::uint32_t end,
                          bool wanted) {
    for (; end - x >= 4; x += 4) {
        const std::uint32_t found = fill.stopping(row + x) ^ (wanted ? no_pixel : all_four_pixels);
        if (found != no_pixel) return x + static_cast<std::uint32_t>(std::countr_zero(found));
    }
    while (x < end && fill.stops(row[x]) != wanted)
        ++x;
    return x;
}

// The first column of the run of pixels up to `x` that do not stop the fill.
std::uint32_t run_start(const Fill& fill, const std::uint32_t* row, std::uint32_t x) {
    for (; x >= 4; x -= 4) {
        const std::uint32_t found = fill.stopping(row + x - 4);
        if (found != no_pixel) return x - 4 + static_cast<std::uint32_t>(std::bit_width(found));
    }
    while (x > 0 && !fill.stops(row[x - 1]))
        --x;
    return x;
}

// One seed at the first pixel of every run, in the columns from `left` up to `end` of the row, that does not
// stop the fill.
void push_runs(const Fill& fill, std::uint32_t left, std::uint32_t end, std::uint32_t y) {
    const std::uint32_t* row = back_row(y);
    for (std::uint32_t x = left; (x = find_column(fill, row, x, end, false)) < end;) {
        push(x, y);
        x = find_column(fill, row, x, end, true);
    }
}

void fill_span(const Fill& fill, Seed seed) {
    const std::uint32_t* row = back_row(seed.y);
    if (fill.stops(row[seed.x])) return;
    const std::uint32_t left = run_start(fill, row, seed.x);
    const std::uint32_t end = find_column(fill, row, seed.x, fill.width, true);
    fill_pixel_row(left, seed.y, end - left, fill.paint);
    if (seed.y > 0) push_runs(fill, left, end, seed.y - 1);
    if (seed.y + 1 < fill.height) push_runs(fill, left, end, seed.y + 1);
}

}  // namespace

void gfx_paint(Point start, std::uint32_t paint, std::uint32_t border) {
    const PixelRectangle area = screen_rectangle();
    if (!area.contains(start.x, start.y)) return;
    const Fill fill{paint, border, static_cast<std::uint32_t>(area.right + 1),
                    static_cast<std::uint32_t>(area.bottom + 1)};
    paint_stack.count = 0;
    push(static_cast<std::uint32_t>(start.x), static_cast<std::uint32_t>(start.y));
    while (paint_stack.count != 0)
        fill_span(fill, paint_stack.seeds[--paint_stack.count]);
}

void do_paint(Cursor& cursor) {
    ++cursor;
    Point start;
    if (!gfx_parse_point(cursor, gfx_settle_last_point(), start)) return;
    const PaintColours colours = parse_paint_colours(cursor, console.foreground);
    if (error_pending()) return;
    gfx_paint(start, colours.paint, colours.border);
    gfx_set_last_point(start);
}

}  // namespace korvane
