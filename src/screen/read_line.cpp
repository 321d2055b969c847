#include "screen/read_line.h"

#include "screen/console.h"
#include "screen/keyboard.h"

namespace korvane {

namespace {

// Takes the last echoed character off the screen: the cursor goes back to its cell, which becomes blank.
void erase_last_cell() {
    const CellRectangle area = con_text_area();
    if (console.cursor_column > area.left) {
        --console.cursor_column;
    } else if (console.cursor_row > area.top) {
        --console.cursor_row;
        console.cursor_column = area.right;
    }
    con_draw_cell(console.cursor_row, console.cursor_column, ' ');
}

}  // namespace

std::int32_t key_read_line(std::span<std::uint8_t> buffer) {
    std::uint32_t length = 0;
    for (;;) {
        const uefi::InputKey key = wait_for_key();
        if (is_escape(key)) return line_aborted;
        const char16_t character = key.UnicodeChar;
        if (character == '\r') {
            con_echo_char(carriage_return);
            buffer[length] = 0;
            return static_cast<std::int32_t>(length);
        }
        if (character == '\b') {
            if (length == 0) continue;
            --length;
            erase_last_cell();
            continue;
        }
        if (character < ' ' || length + 1 >= buffer.size()) continue;
        buffer[length] = static_cast<std::uint8_t>(character);
        con_echo_char(buffer[length]);
        ++length;
    }
}

}  // namespace korvane
