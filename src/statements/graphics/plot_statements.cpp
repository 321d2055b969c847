#include "statements/graphics/plot_statements.h"

#include <algorithm>

#include "program/parse.h"
#include "screen/console.h"
#include "screen/gfx_line.h"
#include "screen/plot.h"
#include "statements/graphics/coordinates.h"
#include "statements/graphics/graphics_colour.h"

namespace korvane {

namespace {

enum class LineShape : std::uint8_t { line, box, filled_box };

void plot_pixel(Cursor& cursor, std::uint32_t default_colour) {
    ++cursor;
    Point point;
    if (!gfx_parse_point(cursor, gfx_settle_last_point(), point)) return;
    const std::uint32_t colour = parse_plain_colour(cursor, default_colour);
    if (error_pending()) return;
    gfx_plot(point.x, point.y, colour);
    gfx_set_last_point(point);
}

// The optional ", B" or ", BF". Anything else behind a comma raises "Syntax Error".
LineShape parse_shape(Cursor& cursor) {
    if (!accept(cursor, ',')) return LineShape::line;
    if (accept_word(cursor, "B")) return LineShape::box;
    if (accept_word(cursor, "BF")) return LineShape::filled_box;
    raise(message::syntax_error);
    return LineShape::line;
}

void draw_shape(LineShape shape, Point from, Point to, std::uint32_t colour) {
    if (shape == LineShape::line) {
        gfx_line(from, to, colour);
        return;
    }
    const auto [left, right] = std::minmax(from.x, to.x);
    const auto [top, bottom] = std::minmax(from.y, to.y);
    const PixelRectangle box = {left, top, right, bottom};
    if (shape == LineShape::filled_box)
        fill_clipped(box, gfx_clip(), colour);
    else
        gfx_box(box, colour);
}

}  // namespace

void do_pset(Cursor& cursor) {
    plot_pixel(cursor, console.foreground);
}

void do_preset(Cursor& cursor) {
    plot_pixel(cursor, console.background);
}

void do_line(Cursor& cursor) {
    ++cursor;
    Point from = gfx_settle_last_point();
    if (cursor->kind != '-' && !gfx_parse_point(cursor, from, from)) return;
    if (!expect(cursor, '-', message::expected_dash)) return;
    Point to;
    if (!gfx_parse_point(cursor, from, to)) return;
    const std::uint32_t colour = gfx_parse_colour(cursor, console.foreground);
    if (error_pending()) return;
    const LineShape shape = parse_shape(cursor);
    if (error_pending()) return;
    draw_shape(shape, from, to, colour);
    gfx_set_last_point(to);
}

}  // namespace korvane
