#include "prompt/delete_lines.h"

#include "program/line_range.h"
#include "program/parse.h"
#include "program/program_store.h"

namespace korvane {

void do_delete(Cursor& cursor) {
    ++cursor;
    if (execution.program_running) {
        raise(message::illegal_direct);
        return;
    }
    LineRange range;
    if (!read_line_range(cursor, delete_range_messages, range)) return;
    if (!at_statement_end(cursor)) {
        raise(message::syntax_error);
        return;
    }
    if (!check_line_range(range)) return;
    delete_line_range(range);
    end_run_of_changed_program();
}

void delete_line_range(const LineRange& range) {
    const std::uint32_t first = first_line_from(range.first);
    const std::uint32_t end = first_line_from(std::uint64_t{range.last} + 1);
    if (first == end) {
        // An empty deletion is an error, deliberately: most likely the range was mistyped.
        raise(message::illegal_function_call);
        return;
    }
    delete_lines(first, end);
}

}  // namespace korvane
