#include "statements/graphics/view.h"

#include <algorithm>

#include "program/parse.h"
#include "screen/console.h"
#include "screen/gfx_line.h"
#include "screen/plot.h"
#include "statements/graphics/coordinates.h"
#include "statements/graphics/graphics_colour.h"
#include "values/convert.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

struct OptionalColour {
    bool given;
    std::uint32_t colour;
};

// "(x1, y1)-(x2, y2)" as integers, sorted. Raises "Illegal function call" when the viewport would have no
// width or height or leave the screen; false after an error.
bool parse_viewport(Cursor& cursor, PixelRectangle& viewport) {
    Value corners[4];
    if (!parse_number_pair(cursor, corners[0], corners[1])) return false;
    if (!expect(cursor, '-', message::expected_dash)) return false;
    if (!parse_number_pair(cursor, corners[2], corners[3])) return false;
    std::int64_t pixels[4];
    for (int i = 0; i < 4; ++i)
        pixels[i] = to_integer(corners[i]);
    if (error_pending()) return false;
    viewport = {std::min(pixels[0], pixels[2]), std::min(pixels[1], pixels[3]),
                std::max(pixels[0], pixels[2]), std::max(pixels[1], pixels[3])};
    if (viewport.left >= 0 && viewport.top >= 0 && viewport.right > viewport.left &&
        viewport.bottom > viewport.top && viewport.right < screen.width && viewport.bottom < screen.height)
        return true;
    raise(message::illegal_function_call);
    return false;
}

// A colour behind a comma, which may be left out.
OptionalColour parse_optional_colour(Cursor& cursor) {
    if (!accept(cursor, ',') || cursor->kind == ',' || at_statement_end(cursor)) return {false, 0};
    return {true, parse_colour_value(cursor)};
}

// The frame one pixel outside the viewport; it must not be clipped by the viewport itself.
void draw_border(const PixelRectangle& viewport, std::uint32_t colour) {
    const PixelRectangle frame = {viewport.left - 1, viewport.top - 1, viewport.right + 1,
                                  viewport.bottom + 1};
    if (frame.left < 0 || frame.top < 0 || frame.right >= screen.width || frame.bottom >= screen.height)
        return;
    graphics.viewport_active = false;
    gfx_box(frame, colour);
    graphics.viewport_active = true;
}

void view_graphics(Cursor& cursor) {
    if (at_statement_end(cursor)) {
        graphics.viewport_active = false;
        graphics.viewport_screen = false;
        return;
    }
    const bool absolute = accept(cursor, KW_SCREEN);
    PixelRectangle viewport;
    if (!parse_viewport(cursor, viewport)) return;
    const OptionalColour fill = parse_optional_colour(cursor);
    if (error_pending()) return;
    const OptionalColour border = parse_optional_colour(cursor);
    if (error_pending()) return;
    graphics.viewport = viewport;
    graphics.viewport_screen = absolute;
    graphics.viewport_active = true;
    if (fill.given) fill_clipped(viewport, screen_rectangle(), fill.colour);
    if (border.given) draw_border(viewport, border.colour);
}

void view_print(Cursor& cursor) {
    if (at_statement_end(cursor)) {
        console.view_print_active = false;
        console.view_print_top = 0;
        console.view_print_bottom = std::max(text_rows(), 1U) - 1;
        return;
    }
    const std::int64_t top = evaluate_integer(cursor);
    if (error_pending() || !expect(cursor, KW_TO, message::expected_to)) return;
    const std::int64_t bottom = evaluate_integer(cursor);
    if (error_pending()) return;
    if (top < 1 || bottom < top || bottom > text_rows()) {
        raise(message::illegal_function_call);
        return;
    }
    console.view_print_top = static_cast<std::uint32_t>(top - 1);
    console.view_print_bottom = static_cast<std::uint32_t>(bottom - 1);
    console.view_print_active = true;
    if (console.cursor_row < console.view_print_top || console.cursor_row > console.view_print_bottom) {
        console.cursor_row = console.view_print_top;
        console.cursor_column = 0;
    }
}

}  // namespace

void do_view(Cursor& cursor) {
    ++cursor;
    if (accept(cursor, KW_PRINT))
        view_print(cursor);
    else
        view_graphics(cursor);
}

}  // namespace korvane
