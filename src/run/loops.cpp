#include "run/loops.h"

#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "values/convert.h"
#include "values/evaluator.h"
#include "values/operators.h"
#include "values/variables.h"

namespace korvane {
namespace {

// Scans forward from `record` of the current line for the token that closes a block, counting nested openers,
// across line ends but never out of the direct line. Makes the line where it stands current.
[[gnu::cold]] bool find_closer(std::uint32_t record, std::uint8_t opener, std::uint8_t closer,
                               Position& found) {
    int depth = 1;
    for (;;) {
        for (std::uint8_t kind; (kind = execution.tokens[record].kind) != END_OF_LINE; ++record) {
            if (kind == opener) ++depth;
            if (kind == closer && --depth == 0) {
                found = {execution.line, record};
                return true;
            }
        }
        if (execution.line == direct_line || execution.line + 1 >= program.count) return false;
        prepare_line(++execution.line);
        if (error_pending()) return false;
        record = 0;
    }
}

// The same through the opening token's memory. Without a closer the run ends, without a message (deliberate).
[[gnu::cold]] bool find_closer(Token& opener, std::uint8_t closer, Position& found) {
    if (opener.jump_known) {
        found = opener.jump;
        return true;
    }
    const bool remembers = execution.line == direct_line || remembers_lines(&opener);
    if (!find_closer(record_of(&opener) + 1, opener.kind, closer, found)) {
        if (!error_pending()) execution.stop = true;
        return false;
    }
    // The scan may have overwritten what runs from the execution buffer.
    if (remembers) {
        opener.jump = found;
        opener.jump_known = true;
    }
    return true;
}

// Goes on behind the NEXT, and behind the name that follows it.
void skip_loop(Token& opener, Cursor& cursor) {
    const std::uint32_t start_line = execution.line;
    Position next;
    if (!find_closer(opener, KW_NEXT, next)) return;
    if (next.line == start_line) {
        cursor = execution.tokens + next.record + 1;
        if (cursor->kind == IDENTIFIER) ++cursor;
        return;
    }
    jump_to_position(next, program.cache_epoch);
    if (error_pending()) return;
    ++execution.record;
    if (execution.tokens[execution.record].kind == IDENTIFIER) ++execution.record;
}

std::int32_t sign_of(const Value& step) {
    if (is_integer(step.type)) return (step.integer > 0) - (step.integer < 0);
    return (step.real > 0) - (step.real < 0);
}

// Whether comparing the double copy of the limit gives the same as comparing the limit itself.
bool limit_fits_double(const Value& limit) {
    constexpr std::int64_t exact = 9007199254740993;  // 2^53 + 1
    if (is_floating(limit.type)) return !__builtin_isnan(limit.real);
    return limit.type != Type::INT64 || (limit.integer >= -exact && limit.integer <= exact);
}

bool read_for_values(Cursor& cursor, Value& start, Value& limit, Value& step) {
    start = evaluate(cursor);
    if (error_pending() || !expect(cursor, KW_TO, message::expected_to)) return false;
    limit = evaluate(cursor);
    if (error_pending()) return false;
    step = Value::of_integer(1);
    if (accept(cursor, KW_STEP)) step = evaluate(cursor);
    if (error_pending()) return false;
    if (is_numeric(start.type) && is_numeric(limit.type) && is_numeric(step.type)) return true;
    raise(message::type_mismatch);
    return false;
}

// The entry of the named variable, or the top one; entries above it are given up. Null when there is none.
ForEntry* find_entry(Cursor& cursor) {
    std::uint32_t count = control_stacks.for_count;
    if (cursor->kind == IDENTIFIER) {
        const char* name = (cursor++)->name;
        while (count > 0 && compare_bytes(control_stacks.fors[count - 1].name, name, name_capacity) != 0)
            --count;
    }
    if (count == 0) return nullptr;
    control_stacks.for_count = count;
    return &control_stacks.fors[count - 1];
}

bool serves_quick_turns(const ForEntry& entry) {
    return entry.whole || (is_floating(entry.variable_type) && entry.limit_is_double);
}

// Finds out whether the specialised NEXT can serve the loop, and where it would go on.
void prepare_quick_turn(ForEntry& entry) {
    entry.quick_variable = nullptr;
    if (entry.epoch != program.cache_epoch) return;
    // A variable may have come back with another type.
    if (!serves_quick_turns(entry) || entry.variable->type != entry.variable_type) return;
    entry.loop_token = cached_statement(entry.loop);
    if (entry.loop_token != nullptr) entry.quick_variable = entry.variable;
}

// Adds the step to a floating variable and gives the new value, or a NaN after raising "Overflow".
double step_floating(const ForEntry& entry) {
    std::uint8_t* storage = entry.variable->storage;
    const bool single = entry.variable_type == Type::SINGLE;
    double sum =
        (single ? static_cast<double>(read_unaligned<float>(storage)) : read_unaligned<double>(storage)) +
        entry.step_as_double;
    if (single) sum = to_single(sum);
    if (!__builtin_isfinite(sum)) {
        raise(message::overflow);
        return sum;
    }
    if (single)
        write_unaligned(storage, static_cast<float>(sum));
    else
        write_unaligned(storage, sum);
    return sum;
}

// Adds the step and compares with the limit: -1, 0 or 1.
int advance(const ForEntry& entry) {
    const Reference variable{entry.variable->storage, entry.variable->type};
    if (is_floating(variable.type) && variable.type == entry.variable_type) {
        const double sum = step_floating(entry);
        if (error_pending()) return 0;
        if (!entry.limit_is_double) return compare(Value::of_real(sum, variable.type), entry.limit);
        return (sum > entry.limit_as_double) - (sum < entry.limit_as_double);
    }
    const Value sum = arithmetic('+', load(variable), entry.step);
    if (error_pending()) return 0;
    store(variable, sum);
    return error_pending() ? 0 : compare(load(variable), entry.limit);
}

}  // namespace

bool find_control_variable(ForEntry& entry) {
    if (entry.generation == arenas.generation) return true;
    entry.variable = find_variable(entry.name, false);
    if (entry.variable == nullptr) return false;
    entry.generation = arenas.generation;
    prepare_quick_turn(entry);
    return true;
}

void set_loop_bounds(ForEntry& entry, const Value& limit, const Value& step) {
    entry.limit = limit;
    entry.step = step;
    entry.turn_key = 0;
    entry.step_as_double = to_double(step);
    entry.limit_as_double = to_double(limit);
    entry.limit_is_double = limit_fits_double(limit);
    entry.step_sign = sign_of(step);
    entry.whole = is_integer(entry.variable_type) && is_integer(limit.type) && is_integer(step.type);
    if (!serves_quick_turns(entry)) entry.quick_variable = nullptr;
}

void fill_for_entry(ForEntry& entry, const char* name, VariableEntry& variable, const Value& limit,
                    const Value& step, Position body) {
    copy_bytes(entry.name, name, name_capacity);
    entry.variable = &variable;
    entry.generation = arenas.generation;
    entry.variable_type = variable.type;
    entry.loop = body;
    entry.epoch = epoch_here();
    set_loop_bounds(entry, limit, step);
    prepare_quick_turn(entry);
}

void do_for(Cursor& cursor) {
    Token& opener = *cursor++;
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_variable);
        return;
    }
    Cursor name = cursor++;
    if (!expect(cursor, '=', message::expected_equals)) return;
    Value start;
    Value limit;
    Value step;
    if (!read_for_values(cursor, start, limit, step)) return;
    Cursor after_name = name;
    VariableEntry* variable = find_or_create_scalar(after_name);
    if (variable == nullptr) return;
    const Reference place{variable->storage, variable->type};
    store(place, start);  // a string variable is a "Type mismatch"
    if (error_pending()) return;
    if (control_stacks.for_count == max_for_depth) {
        raise(message::out_of_memory);
        return;
    }
    if (is_floating(step.type) && __builtin_isnan(step.real)) {
        raise(message::illegal_function_call);
        return;
    }
    ForEntry& entry = control_stacks.fors[control_stacks.for_count];
    fill_for_entry(entry, name->name, *variable, limit, step, {execution.line, record_of(cursor)});
    const int order = compare(load(place), limit);
    if (error_pending()) return;
    if (past_limit(entry.step_sign, order, 0))
        skip_loop(opener, cursor);
    else
        ++control_stacks.for_count;
}

void do_next(Cursor& cursor) {
    ++cursor;
    ForEntry* entry = find_entry(cursor);
    if (entry == nullptr || !find_control_variable(*entry)) {
        raise(message::next_without_for);
        return;
    }
    const int order = advance(*entry);
    if (error_pending()) return;
    if (past_limit(entry->step_sign, order, 0))
        --control_stacks.for_count;
    else
        jump_to_position(entry->loop, entry->epoch);
}

void do_while(Cursor& cursor) {
    Token& opener = *cursor++;
    const Position start{execution.line, record_of(&opener)};
    const bool truth = evaluate_truth(cursor);
    if (error_pending()) return;
    if (!truth) {
        Position wend;
        if (!find_closer(opener, KW_WEND, wend)) return;
        jump_to_position({wend.line, wend.record + 1}, program.cache_epoch);
        return;
    }
    if (control_stacks.while_count == max_while_depth) {
        raise(message::out_of_memory);
        return;
    }
    control_stacks.whiles[control_stacks.while_count++] = {
        .start = start, .token = &opener, .epoch = epoch_here()};
}

void do_wend(Cursor& cursor) {
    ++cursor;
    if (control_stacks.while_count == 0) {
        raise(message::wend_without_while);
        return;
    }
    const WhileEntry& entry = control_stacks.whiles[--control_stacks.while_count];
    jump_to_position(entry.start, entry.epoch);
}

}  // namespace korvane
