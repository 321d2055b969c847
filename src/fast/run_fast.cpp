#include "run/specialised.h"

#include "fast/expression.h"
#include "fast/links.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/line_starts.h"
#include "run/conditions.h"
#include "run/control_stacks.h"
#include "run/dispatch.h"
#include "run/event_timers.h"
#include "run/native.h"
#include "values/held_arguments.h"
#include "values/variables.h"

namespace korvane::fast {

State state;

namespace {

template <bool holds>
std::uint64_t execute_by_handler(Token* at, std::uint64_t budget);
template <bool holds>
std::uint64_t execute_if_by_handler(Token* at, std::uint64_t budget);

std::uint64_t leave(Token* at, std::uint64_t budget) {
    state.look_at = at;
    return budget;
}

// ---- Statements that need no handler of their own -----------------------------------------------

std::uint64_t pass_colons(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return proceed(following(at), budget);
}

std::uint64_t go_to_next_line(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return jump(as<EndRecord>(at).next_line, budget);
}

std::uint64_t end_line_first(Token* at, std::uint64_t budget) {
    enter_line_of(at);
    Token* tokens = execution.line == direct_line ? nullptr : cached_tokens(execution.line + 1);
    // The end of the program, or a line that the run loop has to tokenize.
    if (tokens == nullptr) return leave(at, budget - 1);
    as<EndRecord>(at).next_line = tokens;
    at->execute = go_to_next_line;
    link_line(at);
    KORVANE_JUMP return go_to_next_line(at, budget);
}

std::uint64_t skip_to_end(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return proceed(end_of_line(at), budget);
}

std::uint64_t pass_data(Token* at, std::uint64_t budget) {
    while (at->kind != END_OF_LINE && at->kind != ':')
        ++at;
    KORVANE_JUMP return proceed(following(at), budget);
}

// An ELSE ends the THEN part in front of it; anywhere else it is an error.
std::uint64_t meet_else(Token* at, std::uint64_t budget) {
    if (execution.then_part) KORVANE_JUMP return skip_to_end(at, budget);
    KORVANE_JUMP return execute_general(at, budget);
}

// ---- Meeting a statement for the first time -----------------------------------------------------

[[gnu::cold]] bool specialise_statement(Token* at) {
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
        case KW_ON:
            return specialise_on(at);
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
        case KW_SWAP:
            return specialise_swap(at);
        case KW_READ:
            return specialise_read(at);
        default:
            return false;
    }
}

// What stays the same in every generation; null for statements that are worth specialising.
[[gnu::cold]] Execute plain_form(std::uint8_t kind) {
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
        case KW_ON:
        case KW_RETURN:
        case KW_FOR:
        case KW_NEXT:
        case KW_WHILE:
        case KW_WEND:
        case KW_SWAP:
        case KW_READ:
            return nullptr;
        default:
            return execute_by_handler<true>;
    }
}

// Whether an array has been removed since the statement was met for the first time and found arrays: then
// that is forgotten.
bool finds_arrays_anew(Token* at) {
    bool anew = false;
    for (; at->kind != END_OF_LINE && at->kind != ':'; ++at) {
        if (at->kind != IDENTIFIER || at->resolution != RESOLVED_ARRAY) continue;
        if (at->removals == static_cast<std::uint8_t>(variables.removals)) continue;
        at->resolution = UNRESOLVED;
        anew = true;
    }
    return anew;
}

// By its general handler, but for the forms that never change.
template <bool holds>
inline std::uint64_t execute_unspecialised(Token* at, std::uint64_t budget) {
    if (at->kind == KW_IF) KORVANE_JUMP return execute_if_by_handler<holds>(at, budget);
    KORVANE_JUMP return execute_by_handler<holds>(at, budget);
}

// A statement that could not be specialised is worth another look when variables have been created since, for
// a name without a variable is what stands in the way most often.
std::uint64_t execute_until_variables_change(Token* at, std::uint64_t budget) {
    const auto seen = static_cast<std::uint8_t>(variables.count);
    if (is_current(at) && as<GeneralRecord>(at).variables_seen == seen)
        KORVANE_JUMP return execute_unspecialised<true>(at, budget);
    at->execute = execute_first;
    KORVANE_JUMP return execute_first(at, budget);
}

// Executes the statement at `at`, whose line is the current one, by its general handler; gives the next one,
// or null when the run loop has to look. `holds`: its arguments are all of it that may be specialised
// (values/held_arguments.h). Inlined, because it makes up most of what a short statement costs.
[[gnu::always_inline]] inline Token* handle(Token* at, bool holds) {
    held_arguments.in_use = holds;
    execution.statement_start = record_of(at == execution.kept_token ? execution.kept_start : at);
    if (at == execution.kept_token) execution.then_part = true;
    execution.kept_token = nullptr;
    Cursor cursor = at;
    statement_handlers[at->kind](cursor);
    held_arguments.in_use = false;
    state.look_at = cursor;
    if (error_pending() || execution.stop || !may_run()) return nullptr;
    if (__builtin_expect(!execution.jumped, true)) return following(cursor);
    // A line that is not in the cache is run by the run loop.
    const bool stays = execution.tokens == execution_buffer.direct ||
                       (execution.tokens != nullptr && cached_tokens(execution.line) == execution.tokens);
    if (!stays) return nullptr;
    execution.jumped = false;
    execution.then_part = false;
    Token* target = execution.tokens + execution.record;
    return begins_watched_line(target) ? target : following(target);
}

// The same where no short statement's time is at stake.
[[gnu::noinline]] Token* handle_apart(Token* at, bool holds) {
    enter_line_of(at);
    return handle(at, holds);
}

template <bool holds>
std::uint64_t execute_by_handler(Token* at, std::uint64_t budget) {
    if (holds) enter_line_of(at);
    Token* next = holds ? handle(at, true) : handle_apart(at, false);
    if (next != nullptr) KORVANE_JUMP return proceed(next, budget);
    return budget - 1;
}

// What handling an IF leads to: the next statement and the budget in front of it; or null and what is left.
struct Handled {
    Token* next;
    std::uint64_t budget;
};

[[gnu::noinline]] Handled handle_if(Token* at, std::uint64_t budget, bool holds) {
    if (budget <= max_tokens_per_line && budget < statements_of_if(at) && !execution.then_part)
        return {nullptr, pause(at)};
    const std::uint64_t before = execution.statement_count;
    Token* next = handle_apart(at, holds);
    // The statements that it has executed are taken from the budget, as run() will count them.
    const std::uint64_t nested = execution.statement_count - before;
    execution.statement_count = before;
    budget -= nested < budget ? nested : budget - 1;
    return {next, next != nullptr ? budget : budget - 1};
}

template <bool holds>
std::uint64_t execute_if_by_handler(Token* at, std::uint64_t budget) {
    const Handled handled = handle_if(at, budget, holds);
    if (handled.next != nullptr) KORVANE_JUMP return proceed(handled.next, handled.budget);
    return handled.budget;
}

}  // namespace

// Not inlined: what falls back has other parameters and could not jump on.
[[gnu::noinline]] std::uint64_t execute_general(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return execute_by_handler<false>(at, budget);
}

std::uint64_t execute_general_if(Token* at, std::uint64_t budget) {
    KORVANE_JUMP return execute_if_by_handler<false>(at, budget);
}

// The handler itself is kept by the second token, whose own place for one nobody uses.
static std::uint64_t execute_drawing(Token* at, std::uint64_t budget) {
    state.drawing = at;
    state.random = random_state;
    KORVANE_JUMP return at[1].execute(at, budget);
}

void keep_random(Token* at) {
    at[1].argument = {};
    at[1].execute = at->execute;
    at->execute = execute_drawing;
}

void give_back(const Token* at, std::uint8_t* string_top) {
    arenas.FREETOP = string_top;
    if (at == state.drawing) random_state = state.random;
}

std::uint64_t fall_back(Token* at, std::uint64_t budget, std::uint8_t* string_top) {
    give_back(at, string_top);
    return execute_general(at, budget);
}

std::uint64_t pause(Token* at) {
    enter_line_of(at);
    state.look_at = at;
    return 0;
}

void enter_line_of(const Token* at) {
    Token* end = const_cast<Token*>(end_of_line(at));
    execution.line = as<EndRecord>(end).line;
    execution.tokens = end - as<EndRecord>(end).record;
}

bool may_run() {
    return event_timers_rest();
}

bool has_been_given_up(const Token* at) {
    return at->execute == execute_general || at->execute == execute_until_variables_change;
}

bool has_own_form(const Token* at) {
    return at->execute != execute_first && !has_been_given_up(at);
}

// The statements that follow one another may use all registers, which the caller's own contents are kept from
// here.
#ifdef __wasm__
static std::uint64_t start(Token* at, std::uint64_t budget) {
    return at->execute(at, budget);
}
#else
[[gnu::naked, gnu::noinline]] static std::uint64_t start(Token*, std::uint64_t) {
    asm("push %%rbx\n"
        "push %%r12\n"
        "push %%r13\n"
        "push %%r14\n"
        "push %%rbp\n"
        "call *%c0(%%rdi)\n"
        "pop %%rbp\n"
        "pop %%r14\n"
        "pop %%r13\n"
        "pop %%r12\n"
        "pop %%rbx\n"
        "ret"
        :
        : "i"(__builtin_offsetof(Token, execute)));
}
#endif

Token* run(Token* at, std::uint64_t budget) {
    native::look(at);
    const std::uint64_t unused = start(at, budget);
    execution.statement_count += budget - unused;
    return state.look_at;
}

}  // namespace korvane::fast

namespace korvane {

std::uint64_t leave_at_line_start(Token* at, std::uint64_t budget) {
    fast::enter_line_of(at);
    return fast::leave(at, budget);
}

std::uint64_t execute_first(Token* at, std::uint64_t budget) {
    using namespace fast;
    if (at == state.drawing) state.drawing = nullptr;  // it may have been another statement's record
    if (const Execute plain = plain_form(at->kind)) {
        at->execute = plain;
        KORVANE_JUMP return plain(at, budget);
    }
    // A statement is worth specialising when it is met a second time: in a loop that ends its generation at
    // each turn (DEF FN) none is, and none with an array that comes and goes at each turn.
    if (!is_current(at) || finds_arrays_anew(at)) {
        enter_generation(at);
        at->execute = execute_first;
        KORVANE_JUMP return execute_unspecialised<false>(at, budget);
    }
    enter_line_of(at);
    state.target_not_ready = false;
    begin_statement();
    state.specialised = at;
    const bool specialised = specialise_statement(at);
    state.specialised = nullptr;
    enter_generation(at);
    if (specialised) {
        native::note_specialised(at);
        KORVANE_JUMP return at->execute(at, budget);
    }
    at->execute = state.target_not_ready ? execute_first : execute_until_variables_change;
    as<GeneralRecord>(at).variables_seen = static_cast<std::uint8_t>(variables.count);
    KORVANE_JUMP return execute_unspecialised<false>(at, budget);
}

}  // namespace korvane
