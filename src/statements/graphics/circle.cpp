// The midpoint algorithm walks one octant, from (r, 0) up to the diagonal,
// and mirrors each point seven times:
//
//     x = r, y = 0, d = 1 - r
//     while x >= y: plot; y += 1; if d < 0: d += 2 y + 1, else x -= 1, d += 2 (y - x) + 1
//
// Throughout, d = (y + 1)^2 + x (x - 1) - r^2. So the x at which a given y is plotted is the largest one with
// x (x - 1) < r^2 - y^2, and a circle that lies mostly off the screen need not be walked from its start: only
// those y are visited that can bring a point onto the screen.
#include "statements/graphics/circle.h"

#include <algorithm>
#include <array>
#include <utility>

#include "program/parse.h"
#include "screen/console.h"
#include "screen/plot.h"
#include "statements/graphics/coordinates.h"
#include "statements/graphics/graphics_colour.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

using Wide = __int128;

// A circle that lies wholly inside the clip rectangle.
void draw_inside(Point centre, std::int64_t radius, std::uint32_t colour) {
    const PixelWriter writer;
    const std::int64_t pitch = screen.pitch;
    const std::int64_t middle = centre.y * pitch + centre.x;
    const auto put = [&](std::int64_t offset) {
        writer.put(static_cast<std::uint64_t>(middle + offset), colour);
    };
    std::int64_t x = radius;
    std::int64_t y = 0;
    std::int64_t decision = 1 - radius;
    while (x >= y) {
        const std::int64_t x_rows = x * pitch;
        const std::int64_t y_rows = y * pitch;
        put(y_rows + x);
        put(y_rows - x);
        put(x - y_rows);
        put(-x - y_rows);
        put(x_rows + y);
        put(x_rows - y);
        put(y - x_rows);
        put(-y - x_rows);
        ++y;
        if (decision < 0) {
            decision += 2 * y + 1;
        } else {
            --x;
            decision += 2 * (y - x) + 1;
        }
    }
}

// The x at which the algorithm plots `y`, for 0 <= y <= radius.
std::int64_t octant_x(std::int64_t radius, std::int64_t y) {
    if (y == 0) return radius;
    const Wide limit = Wide{radius} * radius - Wide{y} * y;
    std::int64_t low = 0;
    for (std::int64_t high = radius; low < high;) {
        const std::int64_t middle = high - (high - low) / 2;  // rounded up
        if (Wide{middle} * (middle - 1) < limit)
            low = middle;
        else
            high = middle - 1;
    }
    return low;
}

void plot_clipped(const PixelRectangle& clip, std::int64_t x, std::int64_t y, std::uint32_t colour) {
    if (clip.contains(x, y)) set_pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), colour);
}

void plot_mirrored(const PixelRectangle& clip, Point centre, std::int64_t x, std::int64_t y,
                   std::uint32_t colour) {
    const std::int64_t columns[] = {saturating_add(centre.x, x), saturating_subtract(centre.x, x),
                                    saturating_add(centre.x, y), saturating_subtract(centre.x, y)};
    const std::int64_t rows[] = {saturating_add(centre.y, y), saturating_subtract(centre.y, y),
                                 saturating_add(centre.y, x), saturating_subtract(centre.y, x)};
    for (int i = 0; i < 4; i += 2) {
        plot_clipped(clip, columns[i], rows[i], colour);
        plot_clipped(clip, columns[i], rows[i + 1], colour);
        plot_clipped(clip, columns[i + 1], rows[i], colour);
        plot_clipped(clip, columns[i + 1], rows[i + 1], colour);
    }
}

// Plots the octant's points with y from `first` to `last`; false when the octant ended before `last`.
bool draw_part(const PixelRectangle& clip, Point centre, std::int64_t radius, std::int64_t first,
               std::int64_t last, std::uint32_t colour) {
    std::int64_t x = octant_x(radius, first);
    const Wide next_y = Wide{first} + 1;
    Wide decision = next_y * next_y + Wide{x} * (x - 1) - Wide{radius} * radius;
    for (std::int64_t y = first; y <= last; ++y) {
        if (x < y) return false;
        plot_mirrored(clip, centre, x, y, colour);
        if (decision < 0) {
            decision += Wide{2} * (y + 1) + 1;
        } else {
            --x;
            decision += Wide{2} * (y + 1 - x) + 1;
        }
    }
    return true;
}

// A circle that leaves the clip rectangle. y appears in the points as a distance from the centre's row and
// from its column, in both directions: that gives four ranges of y outside of which nothing can be seen.
void draw_clipped(const PixelRectangle& clip, Point centre, std::int64_t radius, std::uint32_t colour) {
    const auto length = static_cast<std::uint64_t>(radius);
    std::array<StepRange, 4> visible = {
        steps_inside(centre.y, length, true, clip.top, clip.bottom),
        steps_inside(centre.y, length, false, clip.top, clip.bottom),
        steps_inside(centre.x, length, true, clip.left, clip.right),
        steps_inside(centre.x, length, false, clip.left, clip.right),
    };
    // By insertion: a general sort of four ranges would be larger than all else here.
    for (std::size_t sorted = 1; sorted < visible.size(); ++sorted)
        for (std::size_t i = sorted; i > 0 && visible[i].first < visible[i - 1].first; --i)
            std::swap(visible[i], visible[i - 1]);
    std::uint64_t next = 0;  // every smaller y is done
    for (const StepRange& range : visible) {
        const std::uint64_t first = std::max(range.first, next);
        if (range.empty() || first > range.last) continue;
        next = range.last + 1;
        if (!draw_part(clip, centre, radius, static_cast<std::int64_t>(first),
                       static_cast<std::int64_t>(range.last), colour))
            return;
    }
}

}  // namespace

void gfx_circle(Point centre, std::int64_t radius, std::uint32_t colour) {
    const PixelRectangle clip = gfx_clip();
    if (radius < 0 || clip.left > clip.right || clip.top > clip.bottom) return;
    const PixelRectangle extent = {saturating_subtract(centre.x, radius),
                                   saturating_subtract(centre.y, radius), saturating_add(centre.x, radius),
                                   saturating_add(centre.y, radius)};
    if (lies_inside(extent, clip))
        draw_inside(centre, radius, colour);
    else
        draw_clipped(clip, centre, radius, colour);
}

void do_circle(Cursor& cursor) {
    ++cursor;
    Point centre;
    if (!gfx_parse_point(cursor, gfx_settle_last_point(), centre) || !expect_comma(cursor)) return;
    const std::int64_t radius = evaluate_integer(cursor);
    if (error_pending()) return;
    if (radius < 0) {
        raise(message::illegal_function_call);
        return;
    }
    std::uint32_t colour = console.foreground;
    if (accept(cursor, ',') && cursor->kind != ',' && !at_statement_end(cursor))
        colour = parse_colour_value(cursor);
    while (!error_pending() && accept(cursor, ','))
        if (cursor->kind != ',' && !at_statement_end(cursor)) evaluate(cursor);
    if (error_pending()) return;
    gfx_circle(centre, radius, colour);
    gfx_set_last_point(centre);
}

}  // namespace korvane
