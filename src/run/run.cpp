#include "run/run.h"

#include "files/file_table.h"
#include "numbers/format.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/line_starts.h"
#include "program/program_store.h"
#include "run/breakpoints.h"
#include "run/conditions.h"
#include "run/control_stacks.h"
#include "run/dispatch.h"
#include "run/event_timers.h"
#include "run/specialised.h"
#include "run/trace.h"
#include "run/traps.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/keyboard.h"
#include "values/clear.h"
#include "values/data_items.h"
#include "values/held_arguments.h"

namespace korvane {
namespace {

constexpr std::uint64_t statements_per_poll = 256;

std::uint32_t current_line_number() {
    if (execution.line < program.count) return program.lines[execution.line].number;
    // A statement that failed may have taken its own line away.
    return execution.line == gone_line ? execution.gone_number : 0;
}

// What follows a message: " in " and the line number, unless it is 0, and the line end.
void print_place(std::uint32_t number) {
    if (number != 0) {
        con_put_message(" in ");
        con_put_message(format_unsigned(number).view());
    }
    con_put_message("\r");
}

// What happens before the first statement of a program line. True when a breakpoint ended the run.
bool begin_line() {
    if (breakpoints.count != 0 && breakpoint_hit(execution.line)) return true;
    if (trace_active()) print_trace(current_line_number());
    return false;
}

// The keyboard is asked after 256 statements, because asking the firmware is slow. Not inside a THEN part: a
// break there could not be continued, since the ELSE behind it would have lost its IF. So an IF that could
// take more statements than are left has it asked now.
bool break_key_seen(const Token* at, std::uint64_t& next_poll) {
    if (execution.statement_count + max_tokens_per_line < next_poll || execution.then_part) return false;
    const std::uint32_t needed = at->kind == KW_IF ? statements_of_if(at) : 1;
    if (execution.statement_count + needed <= next_poll) return false;
    next_poll = execution.statement_count + statements_per_poll;
    return key_break_check();
}

// Sends a trappable error to its handler; false when it ends the run.
bool trap_error() {
    if (traps.error_target == 0 || handler_active(TrapKind::ERROR) || !execution.program_running)
        return false;
    // The message has been shown already and stays shown (deliberate).
    print_place(errors.line);
    errors.pending = false;
    if (!push_trap_frame(TrapKind::ERROR, {execution.line, execution.statement_start})) return false;
    jump_to_line(traps.error_target);
    return !error_pending();
}

// The user's break at the statement that begins at `record` of the current line: jumps to the ON BREAK
// handler when there is one that is not active, else ends the run, with CONT resuming at that statement.
// False when the handler cannot be reached.
[[gnu::cold]] bool break_execution(std::uint32_t record) {
    const Position at{execution.line, record};
    if (traps.break_target != 0 && !handler_active(TrapKind::BREAK) && execution.program_running) {
        execution.break_line = current_line_number();
        if (push_trap_frame(TrapKind::BREAK, at)) jump_to_line(traps.break_target);
        if (error_pending()) errors.line = execution.break_line;
        return !error_pending();
    }
    execution.break_seen = true;
    execution.break_line = current_line_number();
    if (execution.line != direct_line) {
        execution.continue_at = at;
        execution.can_continue = execution.line < program.count;
    }
    execution.stop = true;
    return true;
}

// What is pending behind a statement: a break, which counts at its start, or an error. True when a jump was
// made or the stop flag set, false when an error ends the run.
[[gnu::cold]] bool settle_pending() {
    if (errors.is_break) {
        errors.pending = false;
        return break_execution(execution.statement_start);
    }
    errors.line = current_line_number();
    return trap_error();
}

// Executes the statement at the cursor, or, where that is possible, as many as may follow one another until
// the keyboard is to be asked.
void execute(Cursor& cursor, std::uint64_t next_poll) {
    const bool cached =
        execution.tokens == execution_buffer.direct ||
        (execution.line < program.count && program.lines[execution.line].tokens == execution.tokens);
    if (cached && fast::may_run() && !begins_watched_line(cursor)) {
        const bool poll_is_late = execution.statement_count >= next_poll;
        cursor = fast::run(cursor, poll_is_late ? 1 : next_poll - execution.statement_count);
        // The start of a watched line is the run loop's business, as after a jump.
        if (!execution.jumped && cursor == execution.tokens && begins_watched_line(cursor)) {
            execution.record = 0;
            execution.jumped = true;
        }
        return;
    }
    execution.statement_start = record_of(cursor);
    held_arguments.in_use = false;  // a statement that began a run may still be executed
    dispatch_statement(cursor);
}

// Executes the statements of the current line from `cursor` on. True when the run goes on: a jump was made,
// or the end of the line reached (execution.jumped tells them apart).
bool run_line(Cursor cursor, std::uint64_t& next_poll) {
    for (;;) {
        while (cursor->kind == ':')
            ++cursor;
        if (cursor->kind == END_OF_LINE) return true;
        if (!event_timers_rest() && !execution.then_part) {
            // An error of the poll belongs to the statement about to be executed.
            execution.statement_start = record_of(cursor);
            if (poll_event_timers(record_of(cursor))) return true;
            if (error_pending()) return settle_pending();
        }
        if (break_key_seen(cursor, next_poll)) return break_execution(record_of(cursor));
        execute(cursor, next_poll);
        if (error_pending()) return settle_pending();
        if (execution.jumped) return true;
        if (execution.stop) return false;
    }
}

// Goes on to the line after the current one; false when the program has run off its end.
bool next_line() {
    if (execution.line == direct_line || execution.line + 1 >= program.count) return false;
    ++execution.line;
    execution.record = 0;
    prepare_line(execution.line);
    return true;
}

}  // namespace

void run_loop() {
    std::uint64_t next_poll = (execution.statement_count / statements_per_poll + 1) * statements_per_poll;
    while (!execution.stop && !error_pending()) {
        execution.jumped = false;
        execution.then_part = false;
        execution.kept_token = nullptr;
        if (execution.line != direct_line && execution.record == 0 && begin_line()) return;
        if (!run_line(execution.tokens + execution.record, next_poll)) return;
        if (!execution.jumped && !execution.stop && !next_line()) return;
    }
}

void reset_run_state() {
    execution.can_continue = false;
    execution.stop = false;
    execution.record = 0;
    execution.break_seen = false;
    forget_breakpoint_pass();
    reset_data_position();
    clear_control_stacks();
    clear_event_timers();
    clear_traps();
    forget_error();
}

// These run once per run: their size matters, not their speed.
[[gnu::cold]] void run_from_here() {
    execution.program_running = true;
    run_loop();
    execution.program_running = false;
    execution.stop = false;
    if (error_pending()) print_place(errors.line);
}

namespace {

// A run that was started as such also tells where Escape ended it.
[[gnu::cold]] void run_and_report() {
    run_from_here();
    if (!execution.break_seen) return;
    con_put_message("Break");
    print_place(execution.break_line);
}

}  // namespace

[[gnu::cold]] void run_program() {
    if (program.count == 0) return;
    close_all_files();
    clear_data();
    reset_run_state();
    text_window_off();
    gfx_reset_coordinates();
    execution.line = 0;
    execution.program_running = true;
    prepare_line(0);
    run_and_report();
}

void chain_to_line(std::uint32_t index) {
    if (execution.program_running) {
        jump_to_position({index, 0});
        return;
    }
    execution.program_running = true;
    jump_to_position({index, 0});
    run_and_report();
    // The direct line that began the run is over with it.
    execution.stop = true;
}

void do_end(Cursor& cursor) {
    ++cursor;
    execution.can_continue = false;
    execution.stop = true;
    close_all_files();
}

void do_stop(Cursor& cursor) {
    ++cursor;
    execution.can_continue = false;
    if (execution.program_running && execution.line != direct_line) {
        execution.continue_at = {execution.line, record_of(cursor)};
        if (cursor->kind == END_OF_LINE) execution.continue_at = {execution.line + 1, 0};
        execution.can_continue = execution.continue_at.line < program.count;
    }
    execution.stop = true;
    con_put_message("Break\r");
}

void do_clear(Cursor& cursor) {
    ++cursor;
    clear_data();
}

void do_new(Cursor& cursor) {
    ++cursor;
    troff();
    clear_data();
}

}  // namespace korvane
