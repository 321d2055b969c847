// Specialised NEXT. It is made for a variable and for the depth at which its loop is open: operand is the
// loop's entry, left_operand the variable, right_kind the depth, next the statement behind a loop that is
// done. As long as all of this fits, a turn is an addition and a comparison.
#include "fast/links.h"
#include "fast/number_types.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "run/control_stacks.h"
#include "run/loops.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

ForEntry& entry_of(const Token* at) {
    return *static_cast<ForEntry*>(const_cast<void*>(at->step.operand));
}

// Whether the innermost loop is the one that this NEXT was made for.
inline bool fits(const Token* at, const ForEntry& entry) {
    return control_stacks.for_count == at->right_kind && entry.quick_variable == at->step.left_operand &&
           entry.generation == at->generation;
}

// Takes the NEXT to the depth of the innermost loop if that is open for its variable; anything else is the
// general handler's business.
std::uint64_t next_elsewhere(Current at, std::uint64_t budget) {
    const std::uint32_t depth = control_stacks.for_count;
    if (depth == 0 || depth == at->right_kind) return execute_general(at, budget);
    ForEntry& entry = control_stacks.fors[depth - 1];
    if (entry.quick_variable != at->step.left_operand || entry.generation != arenas.generation)
        return execute_general(at, budget);
    at->right_kind = static_cast<std::uint8_t>(depth);
    at->step.operand = &entry;
    return at->execute(at, budget);
}

inline std::uint64_t turn(const ForEntry& entry, bool done, Token* at, std::uint64_t budget) {
    if (!done) return jump(entry.loop_token, budget);
    --control_stacks.for_count;
    return proceed(at->step.next, budget);
}

template <typename Number>
std::uint64_t next_real(Current at, std::uint64_t budget) {
    const ForEntry& entry = entry_of(at);
    if (!fits(at, entry)) return next_elsewhere(at, budget);
    std::uint8_t* storage = entry.variable->storage;
    const auto sum = static_cast<Number>(read<Number>(storage) + entry.step_as_double);
    if (!store_number<Number>(storage, sum)) return execute_general(at, budget);
    const double limit = entry.limit_as_double;
    return turn(entry, entry.step_sign < 0 ? sum < limit : sum > limit, at, budget);
}

template <typename Narrow>
std::uint64_t next_whole(Current at, std::uint64_t budget) {
    const ForEntry& entry = entry_of(at);
    if (!fits(at, entry)) return next_elsewhere(at, budget);
    std::uint8_t* storage = entry.variable->storage;
    std::int64_t sum;
    if (__builtin_add_overflow(std::int64_t{read<Narrow>(storage)}, entry.step.integer, &sum))
        return execute_general(at, budget);
    if (!store_number<Narrow>(storage, sum)) return execute_general(at, budget);
    const std::int64_t limit = entry.limit.integer;
    return turn(entry, entry.step_sign < 0 ? sum < limit : sum > limit, at, budget);
}

// Whole numbers are added to a floating variable as doubles, so its loops need not be whole.
Execute choose_next(Type type) {
    return choose_by_type(type, [](auto listed) -> Execute {
        if constexpr (is_integer(listed())) return guarded<next_whole<NumberOf<listed()>>>;
        if constexpr (is_floating(listed())) return guarded<next_real<NumberOf<listed()>>>;
    });
}

}  // namespace

bool specialise_next(Token* at) {
    const std::uint32_t depth = control_stacks.for_count;
    if (depth == 0) return false;
    ForEntry& entry = control_stacks.fors[depth - 1];
    if (!find_control_variable(entry) || entry.quick_variable == nullptr) return false;
    Token* end = at + 1;
    if (end->kind == IDENTIFIER) {
        if (find_variable(end->name, false) != entry.quick_variable) return false;
        ++end;
    }
    at->right_kind = static_cast<std::uint8_t>(depth);
    at->step.operand = &entry;
    at->step.left_operand = entry.quick_variable;
    at->step.next = link_behind(end);
    at->execute = choose_next(entry.variable_type);
    return true;
}

}  // namespace korvane::fast
