#include "screen/line_editor.h"

#include <algorithm>

#include "platform/memory.h"
#include "screen/console.h"
#include "screen/font.h"
#include "screen/framebuffer.h"
#include "screen/keyboard.h"

namespace korvane {

LineEditor line_editor;

namespace {

constexpr std::uint8_t cursor_glyph = 219;  // full block
constexpr char16_t last_typed_character = 254;
static_assert(max_text_rows * max_text_columns == line_editor_work_size);

// The text area, which stays the same while a line is edited, and the width of its rows.
struct EditArea {
    CellRectangle cells;
    std::uint32_t width;
};

// The logical line that holds the cursor, as it stands in the work buffer: all cells of all its rows.
struct LogicalLine {
    std::uint32_t first_row;
    std::uint32_t rows;
    std::uint32_t size;     // rows x width
    std::uint32_t content;  // position after the last byte that is no blank
    std::uint32_t offset;   // of the cursor
};

EditArea edit_area() {
    const CellRectangle cells = con_text_area();
    const std::uint32_t last_column = cells.right < cells.left ? 0 : cells.right - cells.left;
    return {cells, std::min(last_column, max_text_columns - 1) + 1};
}

std::uint8_t cell_at(std::uint32_t row, std::uint32_t column) {
    const bool in_grid = row < max_text_rows && column < max_text_columns;
    return in_grid ? con_read_cell(row, column) : std::uint8_t{' '};
}

// Columns of a row up to its last cell that is no blank, counted from the left edge.
std::uint32_t used_columns(const EditArea& area, std::uint32_t row) {
    std::uint32_t used = area.width;
    while (used > 0 && cell_at(row, area.cells.left + used - 1) == ' ')
        --used;
    return used;
}

std::uint32_t first_row_of_line(const EditArea& area) {
    std::uint32_t row = console.cursor_row;
    while (row > area.cells.top && console.continuation[row] != 0)
        --row;
    return row;
}

std::uint32_t last_row_of_line(const EditArea& area) {
    std::uint32_t row = console.cursor_row;
    while (row < area.cells.bottom && console.continuation[row + 1] != 0)
        ++row;
    return row;
}

LogicalLine read_logical_line(const EditArea& area) {
    const std::uint32_t first = first_row_of_line(area);
    const std::uint32_t rows = last_row_of_line(area) - first + 1;
    std::uint8_t* write = line_editor.work;
    for (std::uint32_t row = first; row < first + rows; ++row)
        for (std::uint32_t i = 0; i < area.width; ++i)
            *write++ = cell_at(row, area.cells.left + i);
    const std::uint32_t size = rows * area.width;
    std::uint32_t content = size;
    while (content > 0 && line_editor.work[content - 1] == ' ')
        --content;
    const std::uint32_t offset =
        (console.cursor_row - first) * area.width + (console.cursor_column - area.cells.left);
    return {first, rows, size, content, offset};
}

// Draws the first `length` bytes of the work buffer from the line's first row on; the rest of the last row
// reached becomes blank.
void redraw_logical_line(const EditArea& area, std::uint32_t first_row, std::uint32_t length) {
    std::uint32_t drawn = 0;
    for (std::uint32_t row = std::max(first_row, area.cells.top); row <= area.cells.bottom; ++row) {
        console.continuation[row] = row == first_row ? 0 : 1;
        for (std::uint32_t i = 0; i < area.width; ++i, ++drawn) {
            con_draw_cell(row, area.cells.left + i,
                          drawn < length ? line_editor.work[drawn] : std::uint8_t{' '});
        }
        if (drawn >= length) break;
    }
}

void move_cursor_to_offset(const EditArea& area, const LogicalLine& line, std::uint32_t offset) {
    console.cursor_row = line.first_row + offset / area.width;
    console.cursor_column = area.cells.left + offset % area.width;
    if (console.cursor_row > area.cells.bottom) {
        con_scroll();
        console.cursor_row = area.cells.bottom;
    }
}

// Takes the byte at `offset` out of the line and redraws it. The old length is redrawn, so that nothing of
// the last character stays behind when the new text exactly fills its rows.
void remove_byte(const EditArea& area, const LogicalLine& line, std::uint32_t offset) {
    if (offset < line.content) {
        move_bytes(line_editor.work + offset, line_editor.work + offset + 1, line.size - offset - 1);
        line_editor.work[line.size - 1] = ' ';
    }
    redraw_logical_line(area, line.first_row, line.content);
}

void delete_at_cursor(const EditArea& area) {
    const LogicalLine line = read_logical_line(area);
    if (line.offset < line.content) remove_byte(area, line, line.offset);
}

void backspace(const EditArea& area) {
    const LogicalLine line = read_logical_line(area);
    if (line.offset == 0) return;
    remove_byte(area, line, line.offset - 1);
    move_cursor_to_offset(area, line, line.offset - 1);
}

// Goes on in the row below, which becomes part of the logical line.
void wrap_to_next_row(const EditArea& area) {
    console.cursor_column = area.cells.left;
    if (console.cursor_row < area.cells.bottom)
        ++console.cursor_row;
    else
        con_scroll();
    console.continuation[console.cursor_row] = 1;
}

void type_over(const EditArea& area, std::uint8_t character, bool wraps) {
    con_draw_cell(console.cursor_row, console.cursor_column, character);
    if (console.cursor_column < area.cells.right)
        ++console.cursor_column;
    else if (wraps)
        wrap_to_next_row(area);
}

void type_inserting(const EditArea& area, const LogicalLine& line, std::uint8_t character) {
    const std::uint32_t end = std::max(line.offset, line.content);
    if (end + 1 > line.size) {
        // An insertion never makes the line grow by a row: with its rows full the key overwrites, and the
        // cursor stops at the right edge. Deliberate.
        type_over(area, character, false);
        return;
    }
    move_bytes(line_editor.work + line.offset + 1, line_editor.work + line.offset, end - line.offset);
    line_editor.work[line.offset] = character;
    redraw_logical_line(area, line.first_row, end + 1);
    move_cursor_to_offset(area, line, line.offset + 1);
}

void type_character(const EditArea& area, std::uint8_t character, std::size_t capacity) {
    const LogicalLine line = read_logical_line(area);
    const std::uint32_t reached = line_editor.insert_mode ? std::max(line.offset, line.content) : line.offset;
    if (reached + 1 >= capacity) return;
    if (line_editor.insert_mode)
        type_inserting(area, line, character);
    else
        type_over(area, character, true);
}

void move_right(const CellRectangle& area) {
    if (console.cursor_column < area.right) {
        ++console.cursor_column;
    } else if (console.cursor_row < area.bottom) {
        ++console.cursor_row;
        console.cursor_column = area.left;
    }
}

void move_left(const CellRectangle& area) {
    if (console.cursor_column > area.left) {
        --console.cursor_column;
    } else if (console.cursor_row > area.top) {
        --console.cursor_row;
        console.cursor_column = area.right;
    }
}

void move_to_row_end(const EditArea& area) {
    const std::uint32_t used = used_columns(area, console.cursor_row);
    console.cursor_column = area.cells.left + std::min(used, area.width - 1);
}

// Keys that move the cursor or change the line without a character of their own; others are ignored.
void act_on_scan_code(const EditArea& area, std::uint16_t scan_code) {
    switch (scan_code) {
        case uefi::scan_up:
            if (console.cursor_row > area.cells.top) --console.cursor_row;
            break;
        case uefi::scan_down:
            if (console.cursor_row < area.cells.bottom) ++console.cursor_row;
            break;
        case uefi::scan_right:
            move_right(area.cells);
            break;
        case uefi::scan_left:
            move_left(area.cells);
            break;
        case uefi::scan_home:
            console.cursor_column = area.cells.left;
            break;
        case uefi::scan_end:
            move_to_row_end(area);
            break;
        case uefi::scan_insert:
            line_editor.insert_mode = !line_editor.insert_mode;
            break;
        case uefi::scan_delete:
            delete_at_cursor(area);
            break;
        default:
            break;
    }
}

// Shows the cursor until a key arrives.
uefi::InputKey read_key_at_cursor() {
    bring_up_to_date();
    const std::uint32_t row = console.cursor_row;
    const std::uint32_t column = console.cursor_column;
    draw_glyph(column * glyph_width, row * glyph_height, cursor_glyph, console.foreground,
               console.background);
    const uefi::InputKey key = look_for_key();
    draw_glyph(column * glyph_width, row * glyph_height, cell_at(row, column), console.foreground,
               console.background);
    return key;
}

// Copies the logical line under the cursor, each row without its trailing blanks.
std::uint32_t take_logical_line(const EditArea& area, std::span<std::uint8_t> buffer) {
    const std::uint32_t last = last_row_of_line(area);
    std::uint32_t length = 0;
    for (std::uint32_t row = first_row_of_line(area); row <= last; ++row) {
        const std::uint32_t used = used_columns(area, row);
        for (std::uint32_t i = 0; i < used && length + 1 < buffer.size(); ++i)
            buffer[length++] = cell_at(row, area.cells.left + i);
    }
    buffer[length] = 0;
    return length;
}

void move_below_logical_line(const EditArea& area) {
    const std::uint32_t last = last_row_of_line(area);
    if (last < area.cells.bottom) {
        console.cursor_row = last + 1;
    } else {
        con_scroll();
        console.cursor_row = area.cells.bottom;
    }
    console.continuation[console.cursor_row] = 0;
    console.cursor_column = area.cells.left;
}

}  // namespace

void initialize_line_editor() {
    line_editor.insert_mode = false;
}

std::int32_t edit_screen_line(std::span<std::uint8_t> buffer) {
    const EditArea area = edit_area();
    con_clamp_cursor(area.cells);
    console.continuation[console.cursor_row] = 0;
    for (;;) {
        const uefi::InputKey key = read_key_at_cursor();
        if (is_escape(key)) return edit_aborted;
        if (key.ScanCode != uefi::scan_none) {
            act_on_scan_code(area, key.ScanCode);
        } else if (key.UnicodeChar == '\r') {
            const std::uint32_t length = take_logical_line(area, buffer);
            move_below_logical_line(area);
            return static_cast<std::int32_t>(length);
        } else if (key.UnicodeChar == '\b') {
            backspace(area);
        } else if (key.UnicodeChar >= ' ' && key.UnicodeChar <= last_typed_character) {
            type_character(area, static_cast<std::uint8_t>(key.UnicodeChar), buffer.size());
        }
    }
}

}  // namespace korvane
