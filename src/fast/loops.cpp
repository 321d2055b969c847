// Specialised FOR, NEXT, WHILE and WEND. FOR keeps its expressions at "=", TO and STEP and the place behind a
// loop that is skipped in step.jump; NEXT keeps its variable in operand. WHILE holds its condition as its
// right side.
#include "core/loops.h"
#include "core/control_stacks.h"
#include "core/keywords.h"
#include "core/parse.h"
#include "fast/expression.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "platform/memory.h"
#include "values/operators.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// ---- NEXT
// ---------------------------------------------------------------------------------------------------------

inline bool past(std::int32_t step_sign, bool below, bool above) {
    return step_sign < 0 ? below : above;
}

// Goes back to the loop's body, or on behind NEXT when it is done.
inline Token* turn(ForEntry& entry, bool done, Token* at) {
    if (done) {
        --control_stacks.for_count;
        return at->step.next;
    }
    return go_to(entry.loop.line, entry.loop_tokens, entry.loop_token);
}

inline Token* next_real(ForEntry& entry, Token* at) {
    std::uint8_t* storage = entry.variable->storage;
    const double sum = read<double>(storage) + entry.step_as_double;
    if (!is_finite(sum)) return execute_general(at);
    __builtin_memcpy(storage, &sum, sizeof sum);
    return turn(entry, past(entry.step_sign, sum<entry.limit_as_double, sum> entry.limit_as_double), at);
}

inline Token* next_single(ForEntry& entry, Token* at) {
    std::uint8_t* storage = entry.variable->storage;
    const auto sum = static_cast<float>(static_cast<double>(read<float>(storage)) + entry.step_as_double);
    if (!is_finite(sum)) return execute_general(at);
    __builtin_memcpy(storage, &sum, sizeof sum);
    return turn(entry, past(entry.step_sign, sum<entry.limit_as_double, sum> entry.limit_as_double), at);
}

template <typename Narrow>
inline Token* next_whole(ForEntry& entry, Token* at) {
    if (!entry.whole) return execute_general(at);
    std::uint8_t* storage = entry.variable->storage;
    std::int64_t sum;
    if (__builtin_add_overflow(std::int64_t{read<Narrow>(storage)}, entry.step.integer, &sum)) {
        return execute_general(at);
    }
    const auto narrow = static_cast<Narrow>(sum);
    if (narrow != sum) return execute_general(at);
    __builtin_memcpy(storage, &narrow, sizeof narrow);
    return turn(entry, past(entry.step_sign, sum<entry.limit.integer, sum> entry.limit.integer), at);
}

// With a variable, the top entry must be that variable's; anything else is the general handler's business.
Token* next_turn(Token* at) {
    if (!is_current(at)) return execute_first(at);
    if (control_stacks.for_count == 0) return execute_general(at);
    ForEntry& entry = control_stacks.fors[control_stacks.for_count - 1];
    const bool mine = at->step.operand == nullptr || at->step.operand == entry.variable;
    if (!mine || entry.generation != arenas.generation || entry.loop_epoch != program.cache_epoch ||
        !entry.limit_is_double) {
        return execute_general(at);
    }
    switch (entry.variable_type) {
        case Type::DOUBLE:
            return next_real(entry, at);
        case Type::SINGLE:
            return next_single(entry, at);
        case Type::INTEGER:
            return next_whole<std::int16_t>(entry, at);
        case Type::LONG:
            return next_whole<std::int32_t>(entry, at);
        case Type::INT64:
            return next_whole<std::int64_t>(entry, at);
        default:
            return execute_general(at);
    }
}

// ---- FOR
// ----------------------------------------------------------------------------------------------------------

// A held number as a Value of its static type; false when its evaluation failed.
bool held_value(const Token* host, Value& value) {
    const auto type = static_cast<Type>(host->value_type);
    if (is_integer(type)) {
        const Whole whole = right_whole(host);
        value = Value::of_integer(whole.value, type);
        return whole.failed == 0;
    }
    const double real = right_real(host);
    value = Value::of_real(real, type);
    return is_finite(real);
}

// Stores a FOR's start value; the general handler raises what is wrong with it.
bool store_start(const VariableEntry& variable, std::uint8_t* storage, const Value& start) {
    if (!is_integer(variable.type)) {
        const double real = is_integer(start.type) ? static_cast<double>(start.integer) : start.real;
        if (variable.type == Type::DOUBLE) {
            write_unaligned(storage, real);
        } else {
            const auto narrow = static_cast<float>(real);
            if (!is_finite(narrow)) return false;
            write_unaligned(storage, narrow);
        }
        return true;
    }
    Whole whole{start.integer, 0};
    if (!is_integer(start.type)) whole = round_whole(start.real);
    if (whole.failed != 0) return false;
    const auto size = storage_size(variable.type);
    if (size == 2 && static_cast<std::int16_t>(whole.value) != whole.value) return false;
    if (size == 4 && static_cast<std::int32_t>(whole.value) != whole.value) return false;
    copy_bytes(storage, &whole.value, size);
    return true;
}

Token* to_of(Token* at) {
    return at->step.inner;
}

Token* for_loop(Token* at) {
    if (!is_current(at)) return execute_first(at);
    Token* equals = at + 2;
    Token* to = to_of(at);
    Token* step_word = at->step.left_inner;
    auto* variable = static_cast<VariableEntry*>(const_cast<void*>(at->step.operand));
    Value start;
    Value limit;
    Value step = Value::of_integer(1);
    if (control_stacks.for_count == max_for_depth || !held_value(equals, start) || !held_value(to, limit) ||
        (step_word != nullptr && !held_value(step_word, step))) {
        return execute_general(at);
    }
    const std::uint64_t size = storage_size(variable->type);
    std::uint64_t before = 0;
    copy_bytes(&before, variable->storage, size);
    if (!store_start(*variable, variable->storage, start)) return execute_general(at);
    ForEntry& entry = control_stacks.fors[control_stacks.for_count];
    fill_for_entry(entry, at[1].name, *variable, limit, step);
    const int order = compare(load({variable->storage, variable->type}), limit);
    // A loop that has nothing to do is skipped by the general handler, which remembers where it ends. It
    // evaluates the start again, which may depend on the variable.
    if (past(entry.step_sign, order<0, order> 0)) {
        copy_bytes(variable->storage, &before, size);
        return execute_general(at);
    }
    remember_loop(entry, at->step.next);
    ++control_stacks.for_count;
    return following(at->step.next);
}

// The expression behind a word, kept in its own domain so that the general NEXT sees the type it would have
// seen.
bool hold_natural(Token* host, Token*& end) {
    Specialised value;
    if (!specialise(host + 1, Domain::WHOLE, value) || !is_numeric(value.side.type) || value.allocates)
        return false;
    hold(host, value.side);
    host->value_type = value.side.type;
    end = value.end;
    return true;
}

// ---- WHILE
// ----------------------------------------------------------------------------------------------------------

Token* while_true(Token* at) {
    if (!is_current(at)) return execute_first(at);
    const Whole whole = at->step.inner->step.whole(0, at->step.inner);
    if (whole.failed != 0) return execute_general(at);
    if (whole.value == 0) {
        if (!at->jump_known) return execute_general(at);
        Token* tokens = cached_tokens(at->step.jump.line);
        if (tokens == nullptr) return execute_general(at);
        return go_to(at->step.jump.line, tokens, following(tokens + at->step.jump.record + 1));
    }
    if (control_stacks.while_count == max_while_depth) return execute_general(at);
    control_stacks.whiles[control_stacks.while_count++].start = {execution.line, record_of(at)};
    return at->step.next;
}

Token* wend(Token* at) {
    if (control_stacks.while_count == 0) return execute_general(at);
    const Position start = control_stacks.whiles[control_stacks.while_count - 1].start;
    Token* tokens = cached_tokens(start.line);
    if (tokens == nullptr || start.record >= program.lines[start.line].token_count)
        return execute_general(at);
    --control_stacks.while_count;
    state.kept_token = nullptr;
    return go_to(start.line, tokens, tokens + start.record);
}

}  // namespace

bool specialise_next(Token* at) {
    Token* end = at + 1;
    const VariableEntry* variable = nullptr;
    if (end->kind == IDENTIFIER) {
        variable = find_variable(end->name, false);
        if (variable == nullptr) return false;
        ++end;
    }
    at->step.operand = variable;
    at->step.next = following(end);
    at->execute = next_turn;
    return true;
}

bool specialise_for(Token* at) {
    if (at[1].kind != IDENTIFIER || at[2].kind != '=') return false;
    VariableEntry* variable = find_variable(at[1].name, false);
    if (variable == nullptr || !is_numeric(variable->type)) return false;
    Token* to;
    Token* end;
    if (!hold_natural(at + 2, to) || to->kind != KW_TO || !hold_natural(to, end)) return false;
    at->step.left_inner = nullptr;
    if (end->kind == KW_STEP) {
        at->step.left_inner = end;
        if (!hold_natural(end, end)) return false;
    }
    at->step.operand = variable;
    at->step.inner = to;
    at->step.next = end;
    at->execute = for_loop;
    return true;
}

bool specialise_while(Token* at) {
    Specialised condition;
    if (!specialise(at + 1, Domain::WHOLE, condition) || condition.allocates ||
        condition.side.kind != side_kind(COMPUTED, true, Domain::WHOLE)) {
        return false;
    }
    hold(at, condition.side);
    at->step.next = following(condition.end);
    at->execute = while_true;
    return true;
}

bool specialise_wend(Token* at) {
    at->execute = wend;
    return true;
}

}  // namespace korvane::fast
