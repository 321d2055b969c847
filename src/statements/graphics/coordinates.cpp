#include "statements/graphics/coordinates.h"

#include "program/parse.h"
#include "screen/plot.h"
#include "values/convert.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

// Where coordinates lie: the viewport, or the whole screen.
PixelRectangle target_rectangle() {
    if (graphics.viewport_active) return graphics.viewport;
    return {0, 0, std::int64_t{screen.width} - 1, std::int64_t{screen.height} - 1};
}

Point map_logical(double x, double y) {
    const PixelRectangle target = target_rectangle();
    const double height = graphics.logical_y2 - graphics.logical_y1;
    const double across = (x - graphics.logical_x1) / (graphics.logical_x2 - graphics.logical_x1);
    const double down =
        graphics.logical_screen ? (y - graphics.logical_y1) / height : (graphics.logical_y2 - y) / height;
    const std::int64_t column = round_to_integer(across * static_cast<double>(target.right - target.left));
    const std::int64_t row = round_to_integer(down * static_cast<double>(target.bottom - target.top));
    return {saturating_add(column, target.left), saturating_add(row, target.top)};
}

// The displacement that STEP means in physical pixels.
Point map_step(double x, double y) {
    if (!graphics.logical_active) return {round_to_integer(x), round_to_integer(y)};
    const Point end = gfx_map(graphics.logical_x1 + x, graphics.logical_y1 + y);
    const Point origin = gfx_map(graphics.logical_x1, graphics.logical_y1);
    return {saturating_subtract(end.x, origin.x), saturating_subtract(end.y, origin.y)};
}

bool evaluate_number(Cursor& cursor, Value& number) {
    number = evaluate(cursor);
    if (!error_pending() && !is_numeric(number.type)) raise(message::type_mismatch);
    return !error_pending();
}

}  // namespace

Point gfx_map(double x, double y) {
    if (graphics.logical_active) return map_logical(x, y);
    Point point{round_to_integer(x), round_to_integer(y)};
    if (graphics.viewport_active && !graphics.viewport_screen) {
        point.x = saturating_add(point.x, graphics.viewport.left);
        point.y = saturating_add(point.y, graphics.viewport.top);
    }
    return point;
}

Point gfx_settle_last_point() {
    if (!graphics.last_point_set) gfx_center_last_point(screen.width, screen.height);
    return graphics.last_point;
}

void gfx_set_last_point(Point point) {
    graphics.last_point = point;
    graphics.last_point_set = true;
}

bool parse_number_pair(Cursor& cursor, Value& x, Value& y) {
    if (!expect(cursor, '(', message::expected_left_parenthesis)) return false;
    return evaluate_number(cursor, x) && expect_comma(cursor) && evaluate_number(cursor, y) &&
           expect(cursor, ')', message::expected_right_parenthesis);
}

bool gfx_parse_point(Cursor& cursor, Point base, Point& point) {
    const bool step = accept(cursor, KW_STEP);
    Value x;
    Value y;
    if (!parse_number_pair(cursor, x, y)) return false;
    if (step) {
        const Point displacement = map_step(to_double(x), to_double(y));
        point = {saturating_add(base.x, displacement.x), saturating_add(base.y, displacement.y)};
    } else {
        point = gfx_map(to_double(x), to_double(y));
    }
    return !error_pending();
}

void do_window(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) {
        graphics.logical_active = false;
        return;
    }
    const bool downwards = accept(cursor, KW_SCREEN);
    Value corners[4];
    if (!parse_number_pair(cursor, corners[0], corners[1])) return;
    if (!expect(cursor, '-', message::expected_dash)) return;
    if (!parse_number_pair(cursor, corners[2], corners[3])) return;
    const double x1 = to_double(corners[0]);
    const double y1 = to_double(corners[1]);
    const double x2 = to_double(corners[2]);
    const double y2 = to_double(corners[3]);
    if (x1 == x2 || y1 == y2) {
        raise(message::illegal_function_call);
        return;
    }
    graphics.logical_x1 = x1;
    graphics.logical_y1 = y1;
    graphics.logical_x2 = x2;
    graphics.logical_y2 = y2;
    graphics.logical_screen = downwards;
    graphics.logical_active = true;
}

}  // namespace korvane
