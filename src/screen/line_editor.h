// The full-screen line editor of the direct mode.
//
// The screen is the editor's data: the cursor moves freely over the text area and Enter takes the logical
// line it stands on, that is, a row whose continuation flag is 0 and every following row whose flag is 1, as
// one line of text. Whatever stands there may be re-entered, printed lines included.
#pragma once

#include <cstdint>
#include <span>

namespace korvane {

inline constexpr std::uint32_t line_editor_capacity = 256;  // what the direct mode passes
// The largest logical line: 128 rows of 256 cells.
inline constexpr std::uint32_t line_editor_work_size = 32768;
inline constexpr std::int32_t edit_aborted = -1;

struct LineEditor {
    bool insert_mode;                          // toggled by the insert key; persists between calls
    std::uint8_t work[line_editor_work_size];  // one logical line while it is changed, row by row
};
extern LineEditor line_editor;

void initialize_line_editor();

// Lets the user edit the screen until Enter and copies the logical line under the cursor into `buffer`: each
// row without its trailing blanks, at most buffer.size() - 1 bytes, zero-terminated. The row on which the
// editor starts begins a logical line, so a prompt printed there before the call is part of it. Returns the
// length, or edit_aborted on Escape.
std::int32_t edit_screen_line(std::span<std::uint8_t> buffer);

}  // namespace korvane
