#include "run/jumps.h"

#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "run/event_timers.h"
#include "run/traps.h"
#include "values/convert.h"
#include "values/evaluator.h"

namespace korvane {
namespace {

Value literal_value(const Token& literal) {
    return is_integer(literal.value_type) ? Value::of_integer(literal.number.integer, literal.value_type)
                                          : Value::of_real(literal.number.real, literal.value_type);
}

void jump_to_value(const Value& value) {
    const std::int64_t number = to_integer(value);
    if (!error_pending()) jump_to_line(number);
}

bool push_return(Cursor cursor) {
    const Position position{execution.line, record_of(cursor)};
    // RETURN to a direct line ends the run.
    const std::uint32_t epoch = position.line == direct_line ? no_epoch : epoch_here();
    return push_gosub({.line = position.line,
                       .record = position.record,
                       .kind = GosubKind::GOSUB,
                       .timer = 0,
                       .epoch = epoch,
                       .token = epoch == no_epoch ? nullptr : cached_statement(position)});
}

// The jump of a GOSUB whose entry is already stacked: a failing one takes the entry back.
void jump_from_gosub(const Value& value) {
    jump_to_value(value);
    if (error_pending()) pop_gosub();
}

// ON ERROR GOTO n and ON BREAK GOTO n, from the word behind ON on.
void set_trap_target(Cursor& cursor, std::int64_t& target) {
    ++cursor;
    if (!expect(cursor, KW_GOTO, message::syntax_error_lower)) return;
    const std::int64_t number = evaluate_integer(cursor);
    if (!error_pending()) target = number;
}

// The whole comma-separated list of numeric literals is passed; gives its `wanted`-th one, or null.
Token* pass_line_list(Cursor& cursor, std::int64_t wanted) {
    Token* target = nullptr;
    std::int64_t position = 0;
    do {
        if (cursor->kind != NUMBER) {
            raise(message::syntax_error_lower);
            return nullptr;
        }
        if (++position == wanted) target = cursor;
        ++cursor;
    } while (accept(cursor, ','));
    return target;
}

void do_on_list(Cursor& cursor) {
    const std::int64_t wanted = evaluate_line_number(cursor);
    if (error_pending()) return;
    const std::uint8_t kind = cursor->kind;
    if (kind != KW_GOTO && kind != KW_GOSUB) {
        raise(message::syntax_error_lower);
        return;
    }
    Token* target = pass_line_list(++cursor, wanted);
    if (error_pending() || target == nullptr) return;
    if (kind == KW_GOTO)
        jump_to_literal(*target);
    else if (push_return(cursor))
        jump_from_gosub(literal_value(*target));
}

}  // namespace

bool is_lone_literal(const Token* at) {
    return at->kind == NUMBER && at_statement_end(at + 1);
}

void jump_to_literal(Token& literal) {
    if (literal.number.target == nullptr) {
        // The jump may overwrite the literal, if that is in the execution buffer.
        const bool remembers = remembers_lines(&literal);
        jump_to_value(literal_value(literal));
        if (!remembers || error_pending()) return;
        literal.number.target = execution.tokens;
        literal.number.target_line = execution.line;
        return;
    }
    jump_to_position({literal.number.target_line, 0});
}

void do_goto(Cursor& cursor) {
    ++cursor;
    if (is_lone_literal(cursor)) {
        jump_to_literal(*cursor++);
        return;
    }
    const Value target = evaluate(cursor);
    if (!error_pending()) jump_to_value(target);
}

void do_gosub(Cursor& cursor) {
    ++cursor;
    if (is_lone_literal(cursor)) {
        Token& literal = *cursor++;
        if (!push_return(cursor)) return;
        jump_to_literal(literal);
        if (error_pending()) pop_gosub();
        return;
    }
    const Value target = evaluate(cursor);
    if (!error_pending() && push_return(cursor)) jump_from_gosub(target);
}

void do_return(Cursor& cursor) {
    ++cursor;
    if (control_stacks.gosub_count == 0) {
        raise(message::return_without_gosub);
        return;
    }
    const GosubEntry entry = control_stacks.gosubs[--control_stacks.gosub_count];
    if (entry.kind == GosubKind::TIMER) end_timer_handler(entry.timer);
    if (entry.line == direct_line) {
        execution.stop = true;
        execution.jumped = true;
        return;
    }
    jump_to_position({entry.line, entry.record}, entry.epoch);
}

void do_on(Cursor& cursor) {
    ++cursor;
    if (cursor->kind == KW_ERROR)
        set_trap_target(cursor, traps.error_target);
    else if (cursor->kind == KW_BREAK)
        set_trap_target(cursor, traps.break_target);
    else if (is_word(cursor, "TIMER") && cursor[1].kind == '(')
        do_on_timer(cursor);
    else
        do_on_list(cursor);
}

}  // namespace korvane
