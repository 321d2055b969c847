#include "fast/run_fast.h"

#include "core/breakpoints.h"
#include "core/dispatch.h"
#include "core/errors.h"
#include "core/event_timers.h"
#include "core/keywords.h"
#include "core/trace.h"
#include "fast/statement.h"
#include "values/variables.h"

namespace korvane::fast {

State state;

namespace {

Token* leave(Token* at) {
    state.look_at = at;
    return nullptr;
}

// ---- Statements that need no handler of their own
// -------------------------------------------------------------------

Token* pass_colons(Token* at) {
    return following(at);
}

// The end record keeps the next line's number in step.jump and its first token in step.next.
Token* go_to_next_line(Token* at) {
    return go_to(at->step.jump.line, at->step.next, at->step.next);
}

Token* end_line_first(Token* at) {
    const std::uint32_t next = execution.line + 1;
    Token* tokens = execution.line == direct_line ? nullptr : cached_tokens(next);
    // The end of the program, or a line that the run loop has to tokenize.
    if (tokens == nullptr) return leave(at);
    at->step.jump = {next, 0};
    at->step.next = tokens;
    at->execute = go_to_next_line;
    return go_to_next_line(at);
}

Token* skip_to_end(Token* at) {
    while (at->kind != END_OF_LINE)
        ++at;
    return at;
}

Token* pass_data(Token* at) {
    while (at->kind != END_OF_LINE && at->kind != ':')
        ++at;
    return following(at);
}

// An ELSE ends the THEN part in front of it; anywhere else it is an error.
Token* meet_else(Token* at) {
    return execution.then_part ? skip_to_end(at) : execute_general(at);
}

// ---- Meeting a statement for the first time
// -------------------------------------------------------------------------

bool specialise_statement(Token* at) {
    switch (at->kind) {
        case IDENTIFIER:
        case KW_LET:
            return specialise_assignment(at);
        case KW_IF:
            return specialise_if(at);
        case KW_GOTO:
            return specialise_goto(at);
        case KW_GOSUB:
            return specialise_gosub(at);
        case KW_RETURN:
            return specialise_return(at);
        case KW_FOR:
            return specialise_for(at);
        case KW_NEXT:
            return specialise_next(at);
        case KW_WHILE:
            return specialise_while(at);
        case KW_WEND:
            return specialise_wend(at);
        default:
            return false;
    }
}

// What stays the same in every generation; null for statements that are worth specialising.
Execute plain_form(std::uint8_t kind) {
    switch (kind) {
        case END_OF_LINE:
            return end_line_first;
        case ':':
            return pass_colons;
        case KW_REM:
            return skip_to_end;
        case KW_DATA:
            return pass_data;
        case KW_ELSE:
            return meet_else;
        case IDENTIFIER:
        case KW_LET:
        case KW_IF:
        case KW_GOTO:
        case KW_GOSUB:
        case KW_RETURN:
        case KW_FOR:
        case KW_NEXT:
        case KW_WHILE:
        case KW_WEND:
            return nullptr;
        default:
            return execute_general;
    }
}

// A statement that could not be specialised is worth another look when variables have been created since, for
// a name without a variable is what stands in the way most often.
Token* execute_until_variables_change(Token* at) {
    const auto seen = static_cast<std::uint8_t>(variables.count);
    if (is_current(at) && at->right_kind == seen) return execute_general(at);
    at->execute = execute_first;
    return execute_first(at);
}

}  // namespace

Token* execute_general(Token* at) {
    execution.statement_start = at == state.kept_token ? state.kept_start : record_of(at);
    state.kept_token = nullptr;
    Cursor cursor = at;
    statement_handlers[at->kind](cursor);
    if (error_pending() || execution.stop || !may_run()) return leave(cursor);
    if (!execution.jumped) return following(cursor);
    // A line that is not in the cache is run by the run loop.
    if (execution.tokens == nullptr || cached_tokens(execution.line) != execution.tokens)
        return leave(cursor);
    execution.jumped = false;
    execution.then_part = false;
    return following(execution.tokens + execution.record);
}

bool may_run() {
#ifdef KORVANE_GENERAL_ONLY
    return false;
#else
    return breakpoints.count == 0 && !trace_active() && event_timers.active == 0;
#endif
}

Token* run(Token* at, std::uint64_t budget) {
    // Counting down to zero costs less than counting up to a limit.
    std::uint64_t left = budget;
    do {
        Token* next = at->execute(at);
        if (next == nullptr) {
            at = state.look_at;
            --left;
            break;
        }
        at = next;
    } while (--left != 0);
    execution.statement_count += budget - left;
    return at;
}

}  // namespace korvane::fast

namespace korvane {

Token* execute_first(Token* at) {
    using namespace fast;
    if (const Execute plain = plain_form(at->kind)) {
        at->execute = plain;
        return plain(at);
    }
    state.target_not_ready = false;
    const bool specialised = specialise_statement(at);
    enter_generation(at);
    if (specialised) return at->execute(at);
    at->execute = state.target_not_ready ? execute_first : execute_until_variables_change;
    at->right_kind = static_cast<std::uint8_t>(variables.count);
    return execute_general(at);
}

}  // namespace korvane
