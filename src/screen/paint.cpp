#include "screen/paint.h"

#include "core/errors.h"
#include "screen/console.h"
#include "screen/coordinates.h"
#include "screen/graphics_colour.h"
#include "screen/plot.h"

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
        const std::uint32_t colour = pixel & 0xFFFFFF;
        return colour == border || colour == paint;
    }
};

void push(std::uint32_t x, std::uint32_t y) {
    if (paint_stack.count < paint_stack_capacity) paint_stack.seeds[paint_stack.count++] = {x, y};
}

const std::uint32_t* back_row(std::uint32_t y) {
    return screen.back_buffer + pixel_index(0, y);
}

// One seed at the first pixel of every run, in columns left..right of the row, that does not stop the fill.
void push_runs(const Fill& fill, std::uint32_t left, std::uint32_t right, std::uint32_t y) {
    const std::uint32_t* row = back_row(y);
    bool in_run = false;
    for (std::uint32_t x = left; x <= right; ++x) {
        const bool open = !fill.stops(row[x]);
        if (open && !in_run) push(x, y);
        in_run = open;
    }
}

void fill_span(const Fill& fill, Seed seed) {
    const std::uint32_t* row = back_row(seed.y);
    if (fill.stops(row[seed.x])) return;
    std::uint32_t left = seed.x;
    while (left > 0 && !fill.stops(row[left - 1]))
        --left;
    std::uint32_t right = seed.x;
    while (right + 1 < fill.width && !fill.stops(row[right + 1]))
        ++right;
    fill_pixel_row(left, seed.y, right - left + 1, fill.paint);
    if (seed.y > 0) push_runs(fill, left, right, seed.y - 1);
    if (seed.y + 1 < fill.height) push_runs(fill, left, right, seed.y + 1);
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
    if (!gfx_parse_point(cursor, gfx_last_point(), start)) return;
    const PaintColours colours = parse_paint_colours(cursor, console.foreground);
    if (error_pending()) return;
    gfx_paint(start, colours.paint, colours.border);
    gfx_set_last_point(start);
}

}  // namespace korvane
