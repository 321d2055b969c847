// Numbered text windows: eight rectangles of cells, each with its own cursor and colours.
//
// They are independent of the global text window, of VIEW PRINT and of each other, and never touch the
// console's cursor or continuation flags. A window once defined stays, also through a change of the screen
// mode, where it may come to lie off the screen; this is deliberate.
#pragma once

#include <array>
#include <cstdint>

#include "screen/console.h"

namespace korvane {

inline constexpr std::uint32_t text_window_count = 8;

struct TextWindow {
    std::uint32_t defined;  // nonzero once TXTWINDOW @n has defined the window
    std::uint32_t left;     // inclusive cells, 0-based
    std::uint32_t top;
    std::uint32_t right;
    std::uint32_t bottom;
    std::uint32_t cursor_column;  // grid coordinates
    std::uint32_t cursor_row;
    std::uint32_t foreground;
    std::uint32_t background;
};
static_assert(sizeof(TextWindow) == 36);

struct TextWindows {
    std::array<TextWindow, text_window_count> windows;
};
extern TextWindows text_windows;

// Start-up: no window is defined.
void initialize_text_windows();

// Puts one character at the window's cursor; wraps and scrolls.
// Carriage return (13) is the only control code.
void win_put_char(TextWindow& window, std::uint8_t code);

// Scrolls the window up one row, filling its bottom row with its background.
void win_scroll(TextWindow& window);

// Fills the window with its background and puts its cursor at its top left cell.
void win_clear(TextWindow& window);

}  // namespace korvane
