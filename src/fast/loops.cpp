// Specialised FOR, NEXT, WHILE and WEND.
#include "run/loops.h"
#include "fast/expression.h"
#include "fast/links.h"
#include "fast/number_types.h"
#include "fast/records.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "fast/text_sides.h"
#include "fast/truth.h"
#include "platform/memory.h"
#include "program/keywords.h"
#include "program/parse.h"
#include "run/control_stacks.h"
#include "values/operators.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// ---- FOR ----------------------------------------------------------------------------------------

// A held number as a Value of its static type; of type NONE when its evaluation failed.
Value held_value(const Token* host) {
    const Type type = as<BoundRecord>(host).type;
    if (is_integer(type)) {
        const Whole whole = quick_right_whole(host);
        return Value::of_integer(whole.value, whole.failed != 0 ? Type::NONE : type);
    }
    const double real = quick_right_real(host);
    return Value::of_real(real, is_finite(real) ? type : Type::NONE);
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

// The innermost free entry still describes the loop that was there last, which is often the same again.
bool describes(const ForEntry& entry, const ForRecord& loop) {
    return entry.quick_variable != nullptr && entry.quick_variable == loop.variable &&
           entry.generation == arenas.generation && entry.loop.line == loop.own.line &&
           entry.loop.record == loop.own.record;
}

// Whether a variable is past the limit before the first turn.
bool nothing_to_do(VariableEntry& variable, const Value& limit, const Value& step) {
    const bool whole = is_integer(limit.type);
    const double last = whole ? static_cast<double>(limit.integer) : limit.real;
    int order;
    if (variable.type == Type::DOUBLE && (!whole || __builtin_fabs(last) <= exact_integers)) {
        const auto start = read<double>(variable.storage);
        order = (start > last) - (start < last);
    } else {
        order = compare(load({variable.storage, variable.type}), limit);
    }
    const bool downward = is_integer(step.type) ? step.integer < 0 : step.real < 0;
    return past_limit(downward ? -1 : 1, order, 0);
}

// The token behind the NEXT at a position, and behind the name that follows it; null when its line's tokens
// are not in the cache.
Token* behind_next(Position next) {
    Token* tokens = next.line == direct_line ? execution_buffer.direct : cached_tokens(next.line);
    if (tokens == nullptr) return nullptr;
    Token* at = tokens + next.record + 1;
    return at->kind == IDENTIFIER ? at + 1 : at;
}

// Goes behind the loop at once, if the general handler has remembered where that is; null if not.
Token* leave_out(const ForRecord& loop) {
    Token* behind = loop.jump_known ? behind_next(loop.next) : nullptr;
    if (behind == nullptr) return nullptr;
    // Going to another line leaves a THEN part.
    if (loop.next.line != loop.own.line) execution.then_part = false;
    return following(behind);
}

// Opens the loop, if it has something to do, and gives the statement to go on with; null when that is for the
// general handler to do. Apart, because a statement that has the address of a local would call its successor
// instead of jumping to it.
[[gnu::noinline]] Token* begin_loop(Token* at, bool may_leave_out) {
    const auto& loop = as<ForRecord>(at);
    const Token* step_word = as<BoundRecord>(loop.to).step;
    VariableEntry* variable = loop.variable;
    if (control_stacks.for_count == max_for_depth) return nullptr;
    const Value start = held_value(at + 2);
    if (failed(start)) return nullptr;
    const Value limit = held_value(loop.to);
    if (failed(limit)) return nullptr;
    const Value step = step_word != nullptr ? held_value(step_word) : Value::of_integer(1);
    if (failed(step)) return nullptr;
    const auto before = read<std::uint64_t>(variable->storage);
    if (!store_start(variable->type, variable->storage, start)) return nullptr;
    if (nothing_to_do(*variable, limit, step)) {
        // The general handler, which looks for the end of the loop and remembers it, evaluates the start
        // again. That may depend on the variable.
        Token* behind = may_leave_out ? leave_out(loop) : nullptr;
        if (behind == nullptr) write_unaligned(variable->storage, before);
        return behind;
    }
    ForEntry& entry = control_stacks.fors[control_stacks.for_count++];
    if (describes(entry, loop))
        set_loop_bounds(entry, limit, step);
    else
        fill_for_entry(entry, at[1].name, *variable, limit, step, loop.own);
    return loop.after;
}

}  // namespace

bool open_loop(Token* at) {
    return begin_loop(at, false) != nullptr;
}

namespace {

std::uint64_t for_loop(Current at, std::uint64_t budget) {
    Token* next = begin_loop(at, true);
    if (next == nullptr) KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(next, budget);
}

// Reads the number behind a word, in its own domain so that the general NEXT sees the type it would
// have seen.
bool read_bound(Token* word, Expression& bound) {
    return read_expression(word + 1, Domain::whole, bound) && !bound.node().takes();
}

void hold_bound(Token* word, const Expression& bound) {
    hold(word, bound);
    as<BoundRecord>(word).type = bound.node().type;
}

// ---- NEXT ---------------------------------------------------------------------------------------

// NEXT is made for a variable and for the depth at which its loop is open. As long as both fit, a turn is an
// addition and a comparison.

// Whether the innermost loop is the one that this NEXT was made for.
inline bool fits(const NextRecord& next) {
    return control_stacks.for_count == next.depth && next.entry->quick_variable == next.variable &&
           next.entry->generation == next.generation;
}

template <typename Number>
std::uint64_t next_real(Current at, std::uint64_t budget) {
    if (!fits(as<NextRecord>(at))) KORVANE_JUMP return next_at_any_depth(at, budget);
    const ForEntry& entry = *as<NextRecord>(at).entry;
    std::uint8_t* storage = entry.variable->storage;
    const auto sum = static_cast<Number>(read<Number>(storage) + entry.step_as_double);
    if (!store_number<Number>(storage, sum)) KORVANE_JUMP return execute_general(at, budget);
    if (!past_limit<double>(entry.step_sign, sum, entry.limit_as_double))
        KORVANE_JUMP return jump(entry.loop_token, budget);
    --control_stacks.for_count;
    KORVANE_JUMP return proceed(as<NextRecord>(at).after, budget);
}

template <typename Narrow>
std::uint64_t next_whole(Current at, std::uint64_t budget) {
    if (!fits(as<NextRecord>(at))) KORVANE_JUMP return next_at_any_depth(at, budget);
    const ForEntry& entry = *as<NextRecord>(at).entry;
    std::uint8_t* storage = entry.variable->storage;
    std::int64_t sum;
    if (__builtin_add_overflow(std::int64_t{read<Narrow>(storage)}, entry.step.integer, &sum))
        KORVANE_JUMP return execute_general(at, budget);
    if (!store_number<Narrow>(storage, sum)) KORVANE_JUMP return execute_general(at, budget);
    if (!past_limit(entry.step_sign, sum, entry.limit.integer))
        KORVANE_JUMP return jump(entry.loop_token, budget);
    --control_stacks.for_count;
    KORVANE_JUMP return proceed(as<NextRecord>(at).after, budget);
}

// Whole numbers are added to a floating variable as doubles, so its loops need not be whole.
Execute choose_next(Type type) {
    return choose_by_type(
        type,
        [](auto listed) -> Execute {
            if constexpr (is_integer(listed())) return guarded<next_whole<NumberOf<listed()>>>;
            if constexpr (is_floating(listed())) return guarded<next_real<NumberOf<listed()>>>;
        });
}

}  // namespace

// Takes the NEXT to the depth of the innermost loop if that is open for its variable; anything else is the
// general handler's business.
std::uint64_t next_at_any_depth(Token* at, std::uint64_t budget) {
    const std::uint32_t depth = control_stacks.for_count;
    if (depth == 0) KORVANE_JUMP return execute_general(at, budget);
    const ForEntry& entry = control_stacks.fors[depth - 1];
    auto& next = as<NextRecord>(at);
    if (entry.quick_variable != next.variable || entry.generation != arenas.generation)
        KORVANE_JUMP return execute_general(at, budget);
    next.depth = static_cast<std::uint8_t>(depth);
    next.entry = &control_stacks.fors[depth - 1];
    KORVANE_JUMP return choose_next(entry.variable_type)(at, budget);
}

namespace {

// ---- WHILE --------------------------------------------------------------------------------------

// Where control goes on when the condition is false; null when that is for the general handler to find out.
[[gnu::noinline]] Token* behind_loop(const Token* at) {
    if (!at->jump_known) return nullptr;
    const Position wend = as<WhileRecord>(at).wend;
    return cached_statement({wend.line, wend.record + 1});
}

template <typename Condition>
std::uint64_t while_true(Current at, std::uint64_t budget) {
    std::uint8_t* string_top = arenas.FREETOP;
    const Truth truth = Condition::of(at);
    if (truth != Truth::is_true || control_stacks.while_count == max_while_depth) {
        Token* behind = truth == Truth::is_false ? behind_loop(at) : nullptr;
        if (behind != nullptr) KORVANE_JUMP return jump(behind, budget);
        return fall_back(at, budget, string_top);
    }
    control_stacks.whiles[control_stacks.while_count++] = {
        .start = as<WhileRecord>(at).own, .token = at, .epoch = program.cache_epoch};
    KORVANE_JUMP return proceed(as<WhileRecord>(at).after, budget);
}

std::uint64_t wend(Token* at, std::uint64_t budget) {
    if (control_stacks.while_count == 0) KORVANE_JUMP return execute_general(at, budget);
    const WhileEntry& entry = control_stacks.whiles[control_stacks.while_count - 1];
    if (entry.epoch != program.cache_epoch) KORVANE_JUMP return execute_general(at, budget);
    --control_stacks.while_count;
    execution.kept_token = nullptr;
    KORVANE_JUMP return jump(entry.token, budget);
}

}  // namespace

[[gnu::cold]] bool specialise_for(Token* at) {
    if (at[1].kind != IDENTIFIER || at[2].kind != '=') return false;
    VariableEntry* variable = find_variable(at[1].name, false);
    if (variable == nullptr || !is_numeric(variable->type)) return false;
    Expression start;
    Expression limit;
    Expression step;
    if (!read_bound(at + 2, start) || start.end->kind != KW_TO || !read_bound(start.end, limit)) return false;
    Token* to = start.end;
    Token* step_word = limit.end->kind == KW_STEP ? limit.end : nullptr;
    if (step_word != nullptr && !read_bound(step_word, step)) return false;
    hold_bound(at + 2, start);
    hold_bound(to, limit);
    as<BoundRecord>(to).step = step_word;
    if (step_word != nullptr) hold_bound(step_word, step);
    Token* end = step_word != nullptr ? step.end : limit.end;
    auto& loop = as<ForRecord>(at);
    loop.variable = variable;
    loop.to = to;
    loop.own = {execution.line, record_of(end)};
    loop.after = link_behind(at, end);
    at->execute = guarded<for_loop>;
    return true;
}

[[gnu::cold]] bool specialise_next(Token* at) {
    const std::uint32_t depth = control_stacks.for_count;
    if (depth == 0) return false;
    ForEntry& entry = control_stacks.fors[depth - 1];
    if (!find_control_variable(entry) || entry.quick_variable == nullptr) return false;
    Token* end = at + 1;
    if (end->kind == IDENTIFIER) {
        if (find_variable(end->name, false) != entry.quick_variable) return false;
        ++end;
    }
    // Control has passed the end of the FOR's line since the FOR was executed.
    if (entry.loop_token->kind == END_OF_LINE && entry.loop_token->line_end.next_line != nullptr)
        entry.loop_token = entry.loop_token->line_end.next_line;
    auto& next = as<NextRecord>(at);
    next.depth = static_cast<std::uint8_t>(depth);
    next.entry = &entry;
    next.variable = entry.quick_variable;
    next.after = link_behind(at, end);
    at->execute = choose_next(entry.variable_type);
    return true;
}

[[gnu::cold]] bool specialise_while(Token* at) {
    Expression condition;
    if (!read_expression(at + 1, Domain::whole, condition)) return false;
    auto& record = as<WhileRecord>(at);
    record.own = {execution.line, record_of(at)};
    record.after = link_behind(at, condition.end);
    at->execute = hold_condition(at, condition,
                                 [](auto form) -> Execute { return guarded<while_true<decltype(form)>>; });
    if (condition.node().draws) keep_random(at);
    return true;
}

bool specialise_wend(Token* at) {
    at->execute = wend;
    return true;
}

}  // namespace korvane::fast
