#include "statements/text/screen_statements.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/listener.h"
#include "program/parse.h"
#include "screen/colour.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/text_windows.h"
#include "screen/video_mode.h"
#include "statements/colour_argument.h"
#include "statements/text/window_argument.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

constexpr std::int64_t max_resolution = 65535;

// ---- CLS ----------------------------------------------------------------------------------------

void clear_viewport() {
    const PixelRectangle& viewport = graphics.viewport;
    fill_pixels(static_cast<std::uint32_t>(viewport.left), static_cast<std::uint32_t>(viewport.top),
                static_cast<std::uint32_t>(viewport.right - viewport.left + 1),
                static_cast<std::uint32_t>(viewport.bottom - viewport.top + 1), console.background);
}

// ---- COLOR --------------------------------------------------------------------------------------

// The values of a COLOR that begins with a foreground: one colour, two colours, one triple or two triples.
struct ColourList {
    std::array<std::int64_t, 6> values;
    std::size_t count;
};

ColourList parse_colour_list(Cursor& cursor) {
    ColourList list{};
    do {
        if (list.count == list.values.size()) {
            raise(message::illegal_function_call);
            return list;
        }
        list.values[list.count++] = evaluate_integer(cursor);
        if (error_pending()) return list;
    } while (accept(cursor, ','));
    if (list.count == 4 || list.count == 5) raise(message::illegal_function_call);
    return list;
}

// Sets the colours that the list names; none when any of them is bad.
void apply_colour_list(const ColourList& list, std::uint32_t& foreground, std::uint32_t& background) {
    const auto& values = list.values;
    const bool triples = list.count >= 3;
    const bool has_background = list.count == 2 || list.count == 6;
    const std::uint32_t first = require_colour(triples ? colour_from_triple(values[0], values[1], values[2])
                                                       : colour_from_value(values[0]));
    if (error_pending()) return;
    if (has_background) {
        const std::uint32_t second = require_colour(
            triples ? colour_from_triple(values[3], values[4], values[5]) : colour_from_value(values[1]));
        if (error_pending()) return;
        background = second;
    }
    foreground = first;
}

void set_background_alone(Cursor& cursor) {
    const std::int64_t value = evaluate_integer(cursor);
    if (error_pending()) return;
    const std::uint32_t colour = require_colour(colour_from_value(value));
    if (!error_pending()) console.background = colour;
}

// ---- LOCATE -------------------------------------------------------------------------------------

// A 0-based cell from a 1-based number counted from `first`; raises "Illegal function call" beyond `last`.
std::uint32_t locate_cell(std::int64_t number, std::uint32_t first, std::uint32_t last) {
    if (number < 1 || number > std::int64_t{last} - std::int64_t{first} + 1) {
        raise(message::illegal_function_call);
        return first;
    }
    return first + static_cast<std::uint32_t>(number - 1);
}

void locate_in_window(Cursor& cursor) {
    TextWindow* const window = parse_window(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const std::int64_t row_number = evaluate_integer(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const std::int64_t column_number = evaluate_integer(cursor);
    if (error_pending()) return;
    const std::uint32_t row = locate_cell(row_number, window->top, window->bottom);
    const std::uint32_t column = locate_cell(column_number, window->left, window->right);
    if (error_pending()) return;
    window->cursor_row = row;
    window->cursor_column = column;
}

bool is_value_left_out(const Token* at) {
    return at->kind == ',' || at_statement_end(at);
}

// A value of a list in which any may be left out.
std::optional<std::int64_t> parse_optional_value(Cursor& cursor) {
    if (is_value_left_out(cursor)) return std::nullopt;
    return evaluate_integer(cursor);
}

// ---- TXTWINDOW ----------------------------------------------------------------------------------

// The four bounds of TXTWINDOW, 1-based and inclusive, as cells.
CellRectangle parse_window_bounds(Cursor& cursor) {
    std::array<std::int64_t, 4> bounds{};
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        if (i > 0 && !expect_comma(cursor)) return {};
        bounds[i] = evaluate_integer(cursor);
        if (error_pending()) return {};
    }
    const auto [x1, y1, x2, y2] = bounds;
    if (x1 < 1 || y1 < 1 || x2 < x1 || y2 < y1 || x2 > text_columns() || y2 > text_rows()) {
        raise(message::illegal_function_call);
        return {};
    }
    return {static_cast<std::uint32_t>(x1 - 1), static_cast<std::uint32_t>(x2 - 1),
            static_cast<std::uint32_t>(y1 - 1), static_cast<std::uint32_t>(y2 - 1)};
}

void define_numbered_window(Cursor& cursor) {
    TextWindow* const window = parse_window_to_define(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const CellRectangle bounds = parse_window_bounds(cursor);
    if (error_pending()) return;
    *window = TextWindow{
        .defined = 1,
        .left = bounds.left,
        .top = bounds.top,
        .right = bounds.right,
        .bottom = bounds.bottom,
        .cursor_column = bounds.left,
        .cursor_row = bounds.top,
        .foreground = console.foreground,
        .background = console.background,
    };
}

}  // namespace

void do_cls(Cursor& cursor) {
    ++cursor;
    if (cursor->kind == '@') {
        TextWindow* const window = parse_window(cursor);
        if (window != nullptr) win_clear(*window);
        return;
    }
    if (gfx_viewport_active()) {
        clear_viewport();
        return;
    }
    tell(Happening::moves, another_row);
    if (!console.text_window_active && !console.view_print_active) {
        con_clear_all();
        return;
    }
    const CellRectangle area = con_text_area();
    con_clear_cells(area);
    console.cursor_row = area.top;
    console.cursor_column = area.left;
}

void do_color(Cursor& cursor) {
    ++cursor;
    if (cursor->kind == '@') {
        TextWindow* const window = parse_window(cursor);
        if (error_pending() || !expect_comma(cursor)) return;
        const ColourList list = parse_colour_list(cursor);
        if (!error_pending()) apply_colour_list(list, window->foreground, window->background);
        return;
    }
    if (at_statement_end(cursor)) return;
    if (accept(cursor, ',')) {
        set_background_alone(cursor);
        return;
    }
    const ColourList list = parse_colour_list(cursor);
    if (!error_pending()) apply_colour_list(list, console.foreground, console.background);
}

void do_locate(Cursor& cursor) {
    ++cursor;
    if (cursor->kind == '@') {
        locate_in_window(cursor);
        return;
    }
    const std::optional<std::int64_t> row_number = parse_optional_value(cursor);
    std::optional<std::int64_t> column_number;
    if (!error_pending() && accept(cursor, ',')) column_number = parse_optional_value(cursor);
    // Classic BASIC sets the shape of the cursor with further values; here they are evaluated, no more.
    while (!error_pending() && accept(cursor, ','))
        if (!is_value_left_out(cursor)) evaluate(cursor);
    if (error_pending()) return;

    const CellRectangle area = con_text_area();
    std::uint32_t row = console.cursor_row;
    std::uint32_t column = console.cursor_column;
    if (row_number) row = locate_cell(*row_number, area.top, area.bottom);
    if (column_number) column = locate_cell(*column_number, area.left, area.right);
    if (error_pending()) return;
    if (row != console.cursor_row || column != console.cursor_column)
        tell(Happening::moves, column - area.left + (row == console.cursor_row ? 0 : another_row));
    console.cursor_row = row;
    console.cursor_column = column;
}

void do_screen(Cursor& cursor) {
    ++cursor;
    const std::int64_t width = evaluate_integer(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const std::int64_t height = evaluate_integer(cursor);
    if (error_pending()) return;
    if (width < 1 || width > max_resolution || height < 1 || height > max_resolution) {
        raise(message::illegal_function_call);
        return;
    }
    if (!con_set_mode(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)))
        raise(message::illegal_function_call);
}

void do_txtwindow(Cursor& cursor) {
    ++cursor;
    if (cursor->kind == '@') {
        define_numbered_window(cursor);
        return;
    }
    if (at_statement_end(cursor)) {
        text_window_off();
        console.cursor_column = 0;
        console.cursor_row = console.view_print_active ? console.view_print_top : 0;
        return;
    }
    const CellRectangle bounds = parse_window_bounds(cursor);
    if (error_pending()) return;
    console.text_window = bounds;
    console.text_window_active = true;
    console.cursor_column = bounds.left;
    console.cursor_row =
        console.view_print_active ? std::max(bounds.top, console.view_print_top) : bounds.top;
}

}  // namespace korvane
