// Specialised FOR, WHILE and WEND. FOR keeps its expressions at "=", TO and STEP and the place behind a loop
// that is skipped in step.jump. WHILE holds its condition as its right side.
#include "run/loops.h"
#include "fast/conditions.h"
#include "fast/expression.h"
#include "fast/links.h"
#include "fast/number_types.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "platform/memory.h"
#include "program/keywords.h"
#include "program/parse.h"
#include "run/control_stacks.h"
#include "values/operators.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// ---- FOR ----------------------------------------------------------------------------------------

// A held number as a Value of its static type; false when its evaluation failed.
bool held_value(const Token* host, Value& value) {
    const auto type = static_cast<Type>(host->value_type);
    if (is_integer(type)) {
        const Whole whole = quick_right_whole(host);
        value = Value::of_integer(whole.value, type);
        return whole.failed == 0;
    }
    const double real = quick_right_real(host);
    value = Value::of_real(real, type);
    return is_finite(real);
}

// Stores a FOR's start value; the general handler raises what is wrong with it.
bool store_start(Type type, std::uint8_t* storage, const Value& start) {
    if (!is_integer(type)) {
        const double real = is_integer(start.type) ? static_cast<double>(start.integer) : start.real;
        return store_number(type, storage, real);
    }
    const Whole whole = is_integer(start.type) ? Whole{start.integer, 0} : round_whole(start.real);
    return whole.failed == 0 && store_number(type, storage, whole.value);
}

Token* to_of(Token* at) {
    return at->step.inner;
}

// The innermost free entry still describes the loop that was there last, which is often the same again.
bool describes(const ForEntry& entry, const Token* at) {
    return entry.quick_variable != nullptr && entry.quick_variable == at->step.operand &&
           entry.generation == arenas.generation && entry.loop.line == at->step.own.line &&
           entry.loop.record == at->step.own.record;
}

// Whether the variable is past the limit before the first turn.
bool nothing_to_do(const ForEntry& entry) {
    const std::uint8_t* storage = entry.variable->storage;
    int order;
    if (entry.variable_type == Type::DOUBLE && entry.limit_is_double) {
        const auto start = read<double>(storage);
        order = (start > entry.limit_as_double) - (start < entry.limit_as_double);
    } else {
        order = compare(load({entry.variable->storage, entry.variable_type}), entry.limit);
    }
    return entry.step_sign < 0 ? order < 0 : order > 0;
}

// Opens the loop; false when that is for the general handler to do. Apart, because a statement that has the
// address of a local would call its successor instead of jumping to it.
[[gnu::noinline]] bool open_loop(Token* at) {
    const Token* step_word = to_of(at)->step.left_inner;
    auto* variable = static_cast<VariableEntry*>(const_cast<void*>(at->step.operand));
    Value start;
    Value limit;
    Value step = Value::of_integer(1);
    if (control_stacks.for_count == max_for_depth || !held_value(at + 2, start) ||
        !held_value(to_of(at), limit) || (step_word != nullptr && !held_value(step_word, step))) {
        return false;
    }
    const auto before = read<std::uint64_t>(variable->storage);
    if (!store_start(variable->type, variable->storage, start)) return false;
    ForEntry& entry = control_stacks.fors[control_stacks.for_count];
    if (describes(entry, at)) {
        set_loop_bounds(entry, limit, step);
    } else {
        fill_for_entry(entry, at[1].name, *variable, limit, step, at->step.own);
    }
    // A loop that has nothing to do is skipped by the general handler, which remembers where it ends. It
    // evaluates the start again, which may depend on the variable.
    if (nothing_to_do(entry)) {
        write_unaligned(variable->storage, before);
        return false;
    }
    ++control_stacks.for_count;
    return true;
}

std::uint64_t for_loop(Current at, std::uint64_t budget) {
    return open_loop(at) ? proceed(at->step.next, budget) : execute_general(at, budget);
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

// ---- WHILE --------------------------------------------------------------------------------------

template <typename Condition>
std::uint64_t while_true(Current at, std::uint64_t budget) {
    const Truth truth = Condition::of(at);
    if (truth == Truth::FALSE && at->jump_known) {
        Token* behind = cached_statement({at->step.jump.line, at->step.jump.record + 1});
        if (behind != nullptr) return jump(behind, budget);
    }
    if (truth != Truth::TRUE || control_stacks.while_count == max_while_depth)
        return execute_general(at, budget);
    control_stacks.whiles[control_stacks.while_count++] = {
        .start = at->step.own, .token = at, .epoch = program.cache_epoch};
    return proceed(at->step.next, budget);
}

template <typename Condition>
struct While {
    static constexpr Execute execute = guarded<while_true<Condition>>;
};

std::uint64_t wend(Token* at, std::uint64_t budget) {
    if (control_stacks.while_count == 0) return execute_general(at, budget);
    const WhileEntry& entry = control_stacks.whiles[control_stacks.while_count - 1];
    if (entry.epoch != program.cache_epoch) return execute_general(at, budget);
    --control_stacks.while_count;
    execution.kept_token = nullptr;
    return jump(entry.token, budget);
}

}  // namespace

bool specialise_for(Token* at) {
    if (at[1].kind != IDENTIFIER || at[2].kind != '=') return false;
    VariableEntry* variable = find_variable(at[1].name, false);
    if (variable == nullptr || !is_numeric(variable->type)) return false;
    Token* to;
    Token* end;
    if (!hold_natural(at + 2, to) || to->kind != KW_TO || !hold_natural(to, end)) return false;
    to->step.left_inner = nullptr;
    if (end->kind == KW_STEP) {
        to->step.left_inner = end;
        if (!hold_natural(end, end)) return false;
    }
    at->step.operand = variable;
    at->step.inner = to;
    at->step.own = {execution.line, record_of(end)};
    at->step.next = link_behind(end);
    at->execute = guarded<for_loop>;
    return true;
}

bool specialise_while(Token* at) {
    Specialised condition;
    if (!specialise(at + 1, Domain::WHOLE, condition) || condition.allocates) return false;
    hold(at, condition.side);
    at->step.own = {execution.line, record_of(at)};
    at->step.next = link_behind(condition.end);
    at->execute = handler_for<While>(at);
    return true;
}

bool specialise_wend(Token* at) {
    at->execute = wend;
    return true;
}

}  // namespace korvane::fast
