#include "run/traps.h"

#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "values/evaluator.h"

namespace korvane {

Traps traps;

namespace {

// Behind the next ":" of the frame's line, or at the start of the next line.
void resume_next(Position at) {
    jump_to_position(at);
    if (error_pending()) return;
    for (std::uint32_t record = at.record; execution.tokens[record].kind != END_OF_LINE; ++record) {
        if (execution.tokens[record].kind == ':') {
            jump_to_position({at.line, record + 1});
            return;
        }
    }
    if (at.line + 1 < program.count)
        jump_to_position({at.line + 1, 0});
    else
        execution.stop = true;
}

}  // namespace

void clear_traps() {
    traps = Traps{};
}

bool handler_active(TrapKind kind) {
    for (std::uint32_t i = 0; i < traps.count; ++i)
        if (traps.frames[i].kind == kind) return true;
    return false;
}

bool push_trap_frame(TrapKind kind, Position at) {
    if (traps.count == max_trap_frames) {
        raise(message::too_many_nested_handlers);
        return false;
    }
    traps.frames[traps.count++] = {.kind = kind, .at = at};
    return true;
}

void do_error(Cursor& cursor) {
    ++cursor;
    const std::int64_t number = evaluate_integer(cursor);
    if (error_pending()) return;
    if (number < 1 || number > 255) {
        raise(message::illegal_function_call);
        return;
    }
    raise(message::user_defined_error);
    errors.code = number;
}

void do_resume(Cursor& cursor) {
    ++cursor;
    if (traps.count == 0) {
        raise(message::resume_without_error);
        return;
    }
    const Position at = traps.frames[--traps.count].at;
    if (accept(cursor, KW_NEXT)) {
        resume_next(at);
        return;
    }
    const std::int64_t line = at_statement_end(cursor) ? 0 : evaluate_line_number(cursor);
    // The RESUME that is executed again after a break leaves the same handler.
    if (break_requested()) ++traps.count;
    if (error_pending()) return;
    if (line == 0)
        jump_to_position(at);
    else
        jump_to_line(line);
}

}  // namespace korvane
