// Specialised IF, GOTO, GOSUB and RETURN. IF holds its condition as its right side; next is where a true one
// leads, left_inner where a false one does. A line number literal keeps the first token of its line.
#include "core/control_stacks.h"
#include "core/keywords.h"
#include "core/parse.h"
#include "fast/expression.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "values/convert.h"

namespace korvane::fast {
namespace {

// Finds the line of a literal; false when it does not exist or does not stay in the token cache.
bool resolve_line(Token* literal) {
    const double number = literal->number.as_double;
    if (!(number >= 0 && number <= max_line_number)) return false;
    // The general handler rounds a broken number.
    if (number != static_cast<double>(static_cast<std::uint32_t>(number))) return false;
    const std::uint32_t line = find_line(static_cast<std::uint32_t>(number));
    Token* tokens = cached_tokens(line);
    if (tokens == nullptr) {
        // The general handler is about to tokenize it, if it exists.
        state.target_not_ready = true;
        return false;
    }
    literal->number.target = tokens;
    literal->number.target_line = line;
    return true;
}

inline Token* go_to_line(const Token* literal) {
    return go_to(literal->number.target_line, literal->number.target, literal->number.target);
}

enum class Truth : std::uint8_t { FALSE, TRUE, FAILED };

inline Truth truth_of(const Whole& value) {
    if (__builtin_expect(value.failed != 0, false)) return Truth::FAILED;
    return value.value != 0 ? Truth::TRUE : Truth::FALSE;
}

Truth real_condition(const Token* at) {
    const double value = right_real(at);
    if (!is_finite(value)) return Truth::FAILED;
    return value != 0 ? Truth::TRUE : Truth::FALSE;
}

// The condition that an IF holds; most begin with a comparison.
template <bool computed>
inline Truth condition(const Token* at) {
    if constexpr (computed) return truth_of(at->step.inner->step.whole(0, at->step.inner));
    if (at->right_kind >> domain_shift == static_cast<std::uint8_t>(Domain::WHOLE))
        return truth_of(right_whole(at));
    return real_condition(at);
}

Token* take_else(Token* at) {
    Token* target = at->step.left_inner;
    execution.then_part = false;
    return target->kind == NUMBER ? go_to_line(target) : target;
}

// What a condition that took string space and failed gives back.
Token* start_again(Token* at, std::uint8_t* string_top) {
    arenas.FREETOP = string_top;
    return execute_general(at);
}

template <bool computed>
Token* if_then_line(Token* at) {
    if (!is_current(at)) return execute_first(at);
    std::uint8_t* string_top = arenas.FREETOP;
    switch (condition<computed>(at)) {
        case Truth::TRUE:
            return go_to_line(at->step.next);
        case Truth::FALSE:
            return take_else(at);
        default:
            return start_again(at, string_top);
    }
}

template <bool computed>
Token* if_then_statements(Token* at) {
    if (!is_current(at)) return execute_first(at);
    std::uint8_t* string_top = arenas.FREETOP;
    switch (condition<computed>(at)) {
        case Truth::TRUE:
            execution.then_part = true;
            // The first statement keeps the start of its IF, and of the IF around that.
            if (state.kept_token != at) state.kept_start = record_of(at);
            state.kept_token = at->step.next;
            return at->step.next;
        case Truth::FALSE:
            return take_else(at);
        default:
            return start_again(at, string_top);
    }
}

// The first ELSE of the line, or its end.
Token* find_else(Token* at) {
    while (at->kind != KW_ELSE && at->kind != END_OF_LINE)
        ++at;
    return at;
}

// Where a false condition leads; false when that is a line that cannot be resolved.
bool resolve_else(Token* at, Token* behind_condition) {
    Token* target = find_else(behind_condition);
    if (target->kind == KW_ELSE) target = following(target + 1);
    // "ELSE :" is an empty statement; only a number right behind ELSE is a line.
    at->step.left_inner = target;
    return target->kind != NUMBER || (target[-1].kind == KW_ELSE && resolve_line(target));
}

Token* goto_line(Token* at) {
    return go_to_line(at + 1);
}

Token* gosub_line(Token* at) {
    if (control_stacks.gosub_count == max_gosub_depth) return execute_general(at);
    control_stacks.gosubs[control_stacks.gosub_count++] = {
        .line = execution.line, .record = record_of(at + 2), .kind = GosubKind::GOSUB, .timer = 0};
    return go_to_line(at + 1);
}

Token* return_to_line(Token* at) {
    if (control_stacks.gosub_count == 0) return execute_general(at);
    const GosubEntry& entry = control_stacks.gosubs[control_stacks.gosub_count - 1];
    Token* tokens = cached_tokens(entry.line);
    if (entry.kind != GosubKind::GOSUB || tokens == nullptr ||
        entry.record >= program.lines[entry.line].token_count) {
        return execute_general(at);
    }
    --control_stacks.gosub_count;
    return go_to(entry.line, tokens, following(tokens + entry.record));
}

bool is_lone_literal(const Token* at) {
    return at->kind == NUMBER && at_statement_end(at + 1);
}

}  // namespace

bool specialise_if(Token* at) {
    Specialised condition;
    if (!specialise(at + 1, Domain::WHOLE, condition) || condition.side.type == Type::STRING) return false;
    hold(at, condition.side);
    Token* then = condition.end;
    if (then->kind == KW_THEN || then->kind == KW_GOTO) ++then;
    if (!resolve_else(at, condition.end)) return false;
    at->step.next = then;
    const bool computed = condition.side.kind == side_kind(COMPUTED, true, Domain::WHOLE);
    if (then->kind == NUMBER) {
        if (!resolve_line(then)) return false;
        at->execute = computed ? if_then_line<true> : if_then_line<false>;
    } else {
        at->step.next = following(then);
        at->execute = computed ? if_then_statements<true> : if_then_statements<false>;
    }
    return true;
}

bool specialise_goto(Token* at) {
    if (!is_lone_literal(at + 1) || !resolve_line(at + 1)) return false;
    at->execute = goto_line;
    return true;
}

bool specialise_gosub(Token* at) {
    if (!is_lone_literal(at + 1) || !resolve_line(at + 1)) return false;
    at->execute = gosub_line;
    return true;
}

bool specialise_return(Token* at) {
    at->execute = return_to_line;
    return true;
}

}  // namespace korvane::fast
