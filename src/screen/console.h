// The text console: the system's only display.
//
// Text stands in cells of 8x16 pixels, at most 256 columns by 128 rows. The grid remembers the character code
// in each cell; the continuation flags remember which rows were reached by wrapping, so that the line editor
// can take a wrapped line as one. Output is confined to the text area, which the text window and VIEW PRINT
// narrow. Coordinates are 0-based. Carriage return (13) is the only control code; every other code is drawn
// as its glyph, line feed, backspace, tab and bell included, which is deliberate.
//
// Messages are printed with these operations; what statements print goes through files/output.h. Whoever
// listens to the interpreter (platform/listener.h) hears it.
#pragma once

#include <cstdint>
#include <string_view>

#include "screen/noted_cells.h"

namespace korvane {

inline constexpr std::uint8_t carriage_return = 13;  // ends a line on the console
inline constexpr std::uint32_t white = 0xFFFFFF;
inline constexpr std::uint32_t black = 0x000000;

struct Console {
    std::uint32_t foreground;  // 0x00RRGGBB, for what is drawn next
    std::uint32_t background;
    std::uint32_t cursor_row;  // grid coordinates, not relative to any window
    std::uint32_t cursor_column;
    bool text_window_active;  // TXTWINDOW confines output to `text_window`
    CellRectangle text_window;
    bool view_print_active;  // VIEW PRINT confines output to these inclusive rows
    std::uint32_t view_print_top;
    std::uint32_t view_print_bottom;
    // 1: the row continues the logical line of the row above, because output wrapped into it.
    std::uint8_t continuation[max_text_rows];
    std::uint8_t grid[max_text_rows][max_text_columns];  // code last drawn in each cell; a cleared cell is 32
};
extern Console console;

// Cells of the screen: min(width / 8, 256) and min(height / 16, 128).
std::uint32_t text_columns();
std::uint32_t text_rows();

// The rectangle that console output may use: the text window or the whole screen, narrowed to VIEW PRINT's
// rows. Its top lies below its bottom when the two have no row in common.
CellRectangle con_text_area();

// Brings a cursor outside the text area into it: to the left edge, and to the nearest row.
void con_clamp_cursor(const CellRectangle& area);

// Puts one character at the cursor, inside the text area; wraps and scrolls.
void con_put_char(std::uint8_t code);

// The same for what no listener is to hear: a character that the user has typed, the prompt.
void con_echo_char(std::uint8_t code);

// The same for each byte of what the system says by itself.
void con_put_message(std::string_view text);

// con_put_char() for each byte of a zero-terminated text; returns the final cursor row.
std::uint32_t con_put_string(const char* text);

// The same for counted bytes.
void con_put_text(std::string_view text);

// The same for text of which every byte is shown as a character, 13 as well, which is a line end otherwise.
void con_put_glyphs(std::string_view text);

// Draws a character in the current colours into a cell and notes it in the grid. Moves nothing.
void con_draw_cell(std::uint32_t row, std::uint32_t column, std::uint8_t code);

// Scrolls the text area up one row; a text area of one row, or an empty one, is left alone.
void con_scroll();

// The character code in a cell of the grid.
inline std::uint8_t con_read_cell(std::uint32_t row, std::uint32_t column) {
    return console.grid[row][column];
}

// The full-screen clear: every pixel in the current background, grid, continuation flags and cursor cleared,
// the graphics last point in the centre.
void con_clear_all();

// Clears the cells of these inclusive bounds in the current background, and the rows' continuation flags.
void con_clear_cells(const CellRectangle& cells);

// Every word of both buffers, the unseen ones at the end of the scan lines included, becomes 0.
void con_clear_black();

// The state at the start of the direct mode: white on black, the screen black, cursor at the top left, grid
// and flags cleared. Text window and VIEW PRINT are off.
void con_reset();

inline void text_window_off() {
    console.text_window_active = false;
}

}  // namespace korvane
