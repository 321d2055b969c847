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

}  // namespace korvane
