#include "screen/console.h"

#include <algorithm>

#include "platform/listener.h"
#include "platform/memory.h"
#include "screen/font.h"
#include "screen/graphics.h"

namespace korvane {

Console console;

namespace {

constexpr std::uint8_t blank = ' ';

void clear_grid() {
    console.cursor_row = 0;
    console.cursor_column = 0;
    fill_bytes(console.continuation, 0, sizeof console.continuation);
    fill_bytes(console.grid, blank, sizeof console.grid);
}

// Cells become blanks, and their rows begin logical lines.
void blank_grid(const CellRectangle& cells) {
    for (std::uint32_t row = cells.top; row <= cells.bottom; ++row) {
        fill_bytes(&console.grid[row][cells.left], blank, cells.right - cells.left + 1);
        console.continuation[row] = 0;
    }
}

void put(std::uint8_t code, bool ends_line) {
    const CellRectangle area = con_text_area();
    con_clamp_cursor(area);

    bool wrapped = false;
    if (ends_line) {
        ++console.cursor_row;
        console.cursor_column = area.left;
    } else {
        con_draw_cell(console.cursor_row, console.cursor_column, code);
        ++console.cursor_column;
    }
    if (console.cursor_column > area.right) {
        console.cursor_column = area.left;
        ++console.cursor_row;
        wrapped = !ends_line;
    }
    if (console.cursor_row > area.bottom) {
        con_scroll();
        console.cursor_row = area.bottom;
        console.cursor_column = area.left;
    }
    if (console.cursor_row < max_text_rows) {
        if (ends_line) console.continuation[console.cursor_row] = 0;
        if (wrapped) console.continuation[console.cursor_row] = 1;
    }
}

}  // namespace

std::uint32_t text_columns() {
    return std::min(screen.width / glyph_width, max_text_columns);
}

std::uint32_t text_rows() {
    return std::min(screen.height / glyph_height, max_text_rows);
}

CellRectangle con_text_area() {
    CellRectangle area = console.text_window;
    if (!console.text_window_active) {
        area.left = 0;
        area.right = std::max(text_columns(), 1u) - 1;
        area.top = 0;
        area.bottom = std::max(text_rows(), 1u) - 1;
    }
    if (console.view_print_active) {
        area.top = std::max(area.top, console.view_print_top);
        area.bottom = std::min(area.bottom, console.view_print_bottom);
    }
    return area;
}

void con_clamp_cursor(const CellRectangle& area) {
    if (console.cursor_column < area.left || console.cursor_column > area.right)
        console.cursor_column = area.left;
    // Raised first, then lowered: should the area be empty, its bottom wins.
    console.cursor_row = std::min(std::max(console.cursor_row, area.top), area.bottom);
}

void con_put_char(std::uint8_t code) {
    tell(Happening::text, code);
    put(code, code == carriage_return);
}

void con_echo_char(std::uint8_t code) {
    put(code, code == carriage_return);
}

void con_put_message(std::string_view text) {
    for (const char character : text) {
        const auto code = static_cast<std::uint8_t>(character);
        tell(Happening::message, code);
        put(code, code == carriage_return);
    }
}

void con_put_glyphs(std::string_view text) {
    for (const char character : text) {
        const auto code = static_cast<std::uint8_t>(character);
        tell(Happening::text, code);
        put(code, false);
    }
}

std::uint32_t con_put_string(const char* text) {
    for (; *text != 0; ++text)
        con_put_char(static_cast<std::uint8_t>(*text));
    return console.cursor_row;
}

void con_put_text(std::string_view text) {
    for (const char character : text)
        con_put_char(static_cast<std::uint8_t>(character));
}

void con_draw_cell(std::uint32_t row, std::uint32_t column, std::uint8_t code) {
    draw_cell(row, column, code, console.foreground, console.background);
    if (row < max_text_rows && column < max_text_columns) console.grid[row][column] = code;
}

void con_scroll() {
    const CellRectangle area = con_text_area();
    if (area.bottom <= area.top || area.right < area.left) return;

    const std::uint32_t columns = area.right - area.left + 1;
    if (listener.protocol != nullptr && columns == text_columns()) {
        draw_first_row(area);
        tell(Happening::scrolls, area.top);
    }
    scroll_cells(area, console.background);
    for (std::uint32_t row = area.top; row < area.bottom; ++row) {
        copy_bytes(&console.grid[row][area.left], &console.grid[row + 1][area.left], columns);
        console.continuation[row] = console.continuation[row + 1];
    }
    blank_grid({area.left, area.right, area.bottom, area.bottom});
}

void con_clear_cells(const CellRectangle& cells) {
    if (cells.right < cells.left || cells.bottom < cells.top) return;
    const std::uint32_t columns = cells.right - cells.left + 1;
    fill_pixels(cells.left * glyph_width, cells.top * glyph_height, columns * glyph_width,
                (cells.bottom - cells.top + 1) * glyph_height, console.background);
    blank_grid(cells);
}

void con_clear_all() {
    fill_pixels(0, 0, screen.width, screen.height, console.background);
    gfx_center_last_point(screen.width, screen.height);
    clear_grid();
}

void con_clear_black() {
    ensure_back_buffer();
    fill_pixels(0, 0, screen.pitch, screen.height, black);
}

void con_reset() {
    console.foreground = white;
    console.background = black;
    console.text_window_active = false;
    console.view_print_active = false;
    fill_pixels(0, 0, screen.width, screen.height, black);
    clear_grid();
}

}  // namespace korvane
