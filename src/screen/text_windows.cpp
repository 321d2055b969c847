#include "screen/text_windows.h"

#include "platform/listener.h"
#include "platform/memory.h"
#include "screen/font.h"

namespace korvane {

TextWindows text_windows;

namespace {

std::uint32_t window_columns(const TextWindow& window) {
    return window.right - window.left + 1;
}

// Fills rows of the grid with blanks, as wide as the window.
void blank_rows(const TextWindow& window, std::uint32_t first, std::uint32_t last) {
    for (std::uint32_t row = first; row <= last; ++row)
        fill_bytes(&console.grid[row][window.left], ' ', window_columns(window));
}

}  // namespace

void initialize_text_windows() {
    text_windows = TextWindows{};
}

void win_put_char(TextWindow& window, std::uint8_t code) {
    tell(Happening::text, code | static_cast<std::uint64_t>(&window - text_windows.windows.data() + 1) << 8);
    if (code == carriage_return) {
        ++window.cursor_row;
        window.cursor_column = window.left;
    } else {
        draw_cell(window.cursor_row, window.cursor_column, code, window.foreground, window.background);
        if (window.cursor_row < max_text_rows && window.cursor_column < max_text_columns)
            console.grid[window.cursor_row][window.cursor_column] = code;
        ++window.cursor_column;
    }
    if (window.cursor_column > window.right) {
        window.cursor_column = window.left;
        ++window.cursor_row;
    }
    if (window.cursor_row > window.bottom) {
        win_scroll(window);
        window.cursor_row = window.bottom;
    }
}

void win_scroll(TextWindow& window) {
    scroll_cells({window.left, window.right, window.top, window.bottom}, window.background);
    for (std::uint32_t row = window.top; row < window.bottom; ++row) {
        copy_bytes(&console.grid[row][window.left], &console.grid[row + 1][window.left],
                   window_columns(window));
    }
    blank_rows(window, window.bottom, window.bottom);
}

void win_clear(TextWindow& window) {
    fill_pixels(window.left * glyph_width, window.top * glyph_height, window_columns(window) * glyph_width,
                (window.bottom - window.top + 1) * glyph_height, window.background);
    blank_rows(window, window.top, window.bottom);
    window.cursor_column = window.left;
    window.cursor_row = window.top;
}

}  // namespace korvane
