#include "run/breakpoints.h"

#include <algorithm>
#include <optional>

#include "numbers/format.h"
#include "program/line_range.h"
#include "program/line_starts.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "screen/console.h"

namespace korvane {

Breakpoints breakpoints;

namespace {

std::uint32_t* end_of_list() {
    return breakpoints.lines + breakpoints.count;
}

std::uint32_t* find_breakpoint(std::uint32_t line) {
    return std::find(breakpoints.lines, end_of_list(), line);
}

void set_breakpoint(std::uint32_t line) {
    if (find_line(line) == direct_line) {
        raise(message::undefined_line_number);
        return;
    }
    if (has_breakpoint(line)) return;
    if (breakpoints.count == max_breakpoints) {
        raise(message::too_many_breakpoints);
        return;
    }
    breakpoints.lines[breakpoints.count++] = line;
}

void delete_breakpoint(std::uint32_t line) {
    std::uint32_t* place = find_breakpoint(line);
    if (place == end_of_list()) return;
    std::copy(place + 1, end_of_list(), place);
    --breakpoints.count;
}

void list_breakpoints() {
    for (std::uint32_t i = 0; i < breakpoints.count; ++i) {
        con_put_text(format_unsigned(breakpoints.lines[i]).view());
        con_put_char(carriage_return);
    }
    if (breakpoints.count == 0) con_put_string("(no breakpoints)\r");
}

void note_change() {
    line_starts.has_breakpoint = breakpoints.count == 0 ? nullptr : has_breakpoint;
    mark_line_starts();
}

// Applies `action` to each number of the list, in order; the ones before a fault keep their effect.
void for_each_line_number(Cursor& cursor, void (*action)(std::uint32_t line)) {
    do {
        const auto line =
            read_line_number(cursor, message::expected_line_number, message::line_number_too_large);
        if (!line) break;
        action(*line);
    } while (!error_pending() && accept(cursor, ','));
    note_change();
}

}  // namespace

bool has_breakpoint(std::uint32_t line) {
    return find_breakpoint(line) != end_of_list();
}

void clear_breakpoints() {
    breakpoints.count = 0;
    forget_breakpoint_pass();
    note_change();
}

bool breakpoint_hit(std::uint32_t line_index) {
    const std::uint32_t number = program.lines[line_index].number;
    if (!has_breakpoint(number)) return false;
    if (breakpoints.passing && breakpoints.passing_line == line_index) {
        forget_breakpoint_pass();
        return false;
    }
    execution.continue_at = {line_index, 0};
    execution.can_continue = true;
    execution.stop = true;
    con_put_message("Breakpoint in ");
    con_put_message(format_unsigned(number).view());
    con_put_message("\r");
    return true;
}

void do_break(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor) || accept(cursor, KW_LIST))
        list_breakpoints();
    else if (accept(cursor, KW_CLEAR))
        clear_breakpoints();
    else if (accept(cursor, KW_DELETE))
        for_each_line_number(cursor, delete_breakpoint);
    else
        for_each_line_number(cursor, set_breakpoint);
}

}  // namespace korvane
