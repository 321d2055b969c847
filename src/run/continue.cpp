#include "run/continue.h"

#include "program/errors.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/program_store.h"
#include "run/breakpoints.h"
#include "run/run.h"

namespace korvane {

void do_cont(Cursor& cursor) {
    ++cursor;
    const Execution caller = execution;
    const Position at = execution.continue_at;
    if (execution.program_running || !execution.can_continue || at.line >= program.count) {
        raise(message::cant_continue);
        return;
    }
    jump_to_position(at);
    // Resuming at the start of a line must not stop again at the breakpoint on it.
    breakpoints.passing = at.record == 0;
    breakpoints.passing_line = at.line;
    execution.stop = false;
    execution.can_continue = false;
    run_from_here();

    // A break of the run stays noted until the next RUN, which alone reports it; deliberate.
    if (caller.line != direct_line) {
        // CONT in a line reached by a direct GOTO: that line may be gone by now, so its own run ends with
        // this one.
        execution.stop = true;
        return;
    }
    // What follows CONT in the direct line goes on.
    execution.line = caller.line;
    execution.tokens = caller.tokens;
    execution.record = caller.record;
    execution.statement_start = caller.statement_start;
    execution.then_part = caller.then_part;
    execution.jumped = false;
}

}  // namespace korvane
