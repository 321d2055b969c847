// The name of the scalar is the statement's first token and "=" the second one, which holds the place and
// the value.
#include "fast/scalar_assignments.h"

#include "fast/arithmetic.h"
#include "fast/assign.h"
#include "fast/statement.h"
#include "fast/text_assignments.h"

namespace korvane::fast {
namespace {

template <Type type>
std::uint64_t let_scalar(Current at, std::uint64_t budget) {
    Token* equals = at + 1;
    std::uint8_t* string_top = arenas.FREETOP;
    if (!assign<type>(place_of(equals), equals)) return fall_back(at, budget, string_top);
    KORVANE_JUMP return proceed(after(equals), budget);
}

// Floating targets whose right side is a chain of their type.
template <typename Number>
std::uint64_t let_chain(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    const Number value = call_chain(read<Number>(assignment.value_leaf), assignment.value_chain);
    if (!store_number<Number>(place_of(at + 1), value)) KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(at + 1), budget);
}

// The same where it is one operator between two leaves.
template <typename Number, char operation>
std::uint64_t let_operation(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    const auto& only = as<OperatorRecord>(assignment.value_chain);
    const auto value = apply<operation>(read<Number>(assignment.value_leaf), read<Number>(only.right_leaf));
    if (!store_number<Number>(place_of(at + 1), value)) KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(at + 1), budget);
}

// The handler for a chain of the type.
template <typename Number>
Execute choose_chain(const Node& value) {
    constexpr std::uint8_t leaf = sizeof(Number) == sizeof(double) ? F64 : F32;
    const bool between_leaves =
        value.form == Form::binary && node_at(value.left).kind == leaf && node_at(value.right).kind == leaf;
    const Execute handler = choose<'+', '-', '*', '/'>(
        between_leaves ? value.token->kind : std::uint8_t{0},
        [](auto operation) -> Execute { return guarded<let_operation<Number, operation()>>; });
    return handler != nullptr ? handler : guarded<let_chain<Number>>;
}

// Integer targets: a chain behind a leaf. A computed beginning is a chain behind a zero.
template <typename Integer, Leaf leaf>
std::uint64_t let_whole_chain(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    const Whole whole = call_chain(whole_leaf<leaf>(assignment.value_leaf), assignment.value_chain);
    if (whole.failed != 0 || !store_number<Integer>(assignment.place, whole.value))
        KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(assignment.after, budget);
}

template <typename Integer>
Execute choose_whole_chain(std::uint8_t kind) {
    if ((kind & has_chain) == 0 || domain_of_kind(kind) != Domain::whole) return nullptr;
    const auto leaf = static_cast<Leaf>(kind & leaf_mask);
    return choose<I16, I32, I64>(leaf == COMPUTED ? I64 : leaf, [](auto listed) -> Execute {
        return guarded<let_whole_chain<Integer, listed()>>;
    });
}

// The handler for a frequent shape, or null.
Execute choose_shape(Type type, const Node& value) {
    return choose_by_type(
        type,
        [&value](auto listed) -> Execute {
            using Number = NumberOf<listed()>;
            if constexpr (is_integer(listed())) return choose_whole_chain<Number>(value.kind);
            if constexpr (is_floating(listed()))
                return is_plain<Number>(value.kind) && (value.kind & has_chain) != 0
                           ? choose_chain<Number>(value)
                           : nullptr;
        });
}

}  // namespace

[[gnu::cold]] Execute scalar_handler(Type type, const Node& value) {
    // What takes string space or random numbers has to give them back when it fails.
    const Execute shape = value.takes() ? nullptr : choose_shape(type, value);
    if (shape != nullptr) return shape;
    if (type == Type::STRING) return choose_text_assignment(value);
    return choose_by_type(type, [](auto listed) -> Execute { return guarded<let_scalar<listed()>>; });
}

}  // namespace korvane::fast
