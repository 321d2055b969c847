#include "prompt/auto_numbering.h"

#include "program/errors.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"

namespace korvane {

AutoNumbering auto_numbering;

void do_auto(Cursor& cursor) {
    ++cursor;
    std::int64_t start = 10;
    std::int64_t increment = 10;
    if (!at_statement_end(cursor) && cursor->kind != ',') start = evaluate_line_number(cursor);
    if (error_pending()) return;
    if (accept(cursor, ',')) increment = evaluate_integer(cursor);
    if (error_pending()) return;
    if (start > max_line_number || increment < 1) {
        raise(message::illegal_function_call);
        return;
    }
    auto_numbering = {
        .active = true, .first = true, .number = static_cast<std::uint32_t>(start), .increment = increment};
}

bool next_auto_number() {
    if (!auto_numbering.first) {
        if (auto_numbering.increment > std::int64_t{max_line_number} - auto_numbering.number) {
            auto_numbering.active = false;
            return false;
        }
        auto_numbering.number += static_cast<std::uint32_t>(auto_numbering.increment);
    }
    auto_numbering.first = false;
    return true;
}

}  // namespace korvane
