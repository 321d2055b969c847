#include "prompt/list.h"

#include <algorithm>
#include <string_view>

#include "numbers/format.h"
#include "platform/characters.h"
#include "program/line_range.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "screen/console.h"
#include "screen/pager.h"

namespace korvane {

namespace {

constexpr LineRangeMessages list_range_messages{message::line_number_too_large, message::expected_line_number,
                                                message::syntax_error};

// Measures a page in rows of the text area.
struct Page {
    std::uint32_t columns;
    std::uint32_t capacity;  // rows that fit above the prompt, at least 1
    std::uint32_t shown;     // rows used since the last prompt
};

Page empty_page() {
    const CellRectangle area = con_text_area();
    const std::uint32_t columns = area.right < area.left ? 1 : area.right - area.left + 1;
    const std::uint32_t rows = area.bottom <= area.top ? 2 : area.bottom - area.top + 1;
    constexpr auto prompt_length = static_cast<std::uint32_t>(sizeof pause_or_abort_prompt - 1);
    const std::uint32_t prompt_rows = (columns + prompt_length - 1) / columns;
    return {columns, rows > prompt_rows ? rows - prompt_rows : 1, 0};
}

// Rows that a line takes when it is printed at the cursor. Line ends inside the text start a new row, CR LF
// one.
std::uint32_t rows_of_line(std::uint32_t index, std::uint32_t columns) {
    const CellRectangle area = con_text_area();
    const std::uint32_t start = console.cursor_column > area.left ? console.cursor_column - area.left : 0;
    const std::uint32_t head = format_unsigned(program.lines[index].number).size + 1;
    std::uint32_t rows = (start + head) / columns;
    std::uint32_t column = (start + head) % columns;
    char previous = 0;
    for (const char character : line_text(index)) {
        const bool second_half = character == '\n' && previous == '\r';
        previous = character;
        if (second_half) continue;
        if (is_line_break(static_cast<std::uint8_t>(character)) || ++column == columns) {
            ++rows;
            column = 0;
        }
    }
    return std::max(rows + (column != 0 ? 1U : 0U), 1U);
}

// The range argument. Raises and gives false on a fault.
bool read_range(Cursor& cursor, LineRange& range) {
    if (accept_word(cursor, "ERL")) {
        if (errors.line == 0) {
            raise(message::no_error_line);
            return false;
        }
        range = {errors.line, errors.line};
        return true;
    }
    if (cursor->kind != NUMBER && cursor->kind != '-') return true;
    return read_line_range(cursor, list_range_messages, range);
}

void list_lines(const LineRange& range, bool paged) {
    Page page = empty_page();
    const std::uint32_t end = first_line_from(std::uint64_t{range.last} + 1);
    for (std::uint32_t index = first_line_from(range.first); index < end; ++index) {
        std::uint32_t rows = rows_of_line(index, page.columns);
        if (paged && page.shown != 0 && page.shown + rows > page.capacity) {
            if (!pause_listing_or_abort()) return;
            page.shown = 0;
            rows = rows_of_line(index, page.columns);
        }
        print_program_line(index);
        page.shown += rows;
    }
}

}  // namespace

void print_program_line(std::uint32_t index) {
    con_put_text(format_unsigned(program.lines[index].number).view());
    con_put_char(' ');
    con_put_text(line_text(index));
    end_console_line();
}

void do_list(Cursor& cursor) {
    ++cursor;
    LineRange range;
    if (!read_range(cursor, range)) return;
    const bool paged = !accept_word(cursor, "NOWAIT");
    if (!at_statement_end(cursor)) {
        raise(message::syntax_error);
        return;
    }
    if (check_line_range(range)) list_lines(range, paged);
}

}  // namespace korvane
