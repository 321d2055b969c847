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

// The frequent shapes of a floating target whose right side is plain: a variable or literal of its type, one
// operator between two of them, more behind that, and anything else that is a chain.
template <typename Number>
std::uint64_t let_copy(Current at, std::uint64_t budget) {
    Token* equals = at + 1;
    write_unaligned(place_of(equals), read<Number>(as<AssignmentRecord>(equals).value_leaf));
    KORVANE_JUMP return proceed(after(equals), budget);
}

template <typename Number>
std::uint64_t let_chain(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    const Number value = call_chain(read<Number>(assignment.value_leaf), assignment.value_chain);
    if (!store_number<Number>(place_of(at + 1), value)) KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(at + 1), budget);
}

template <typename Number, char operation>
inline Number first_result(const AssignmentRecord& assignment) {
    const auto& first = as<OperatorRecord>(assignment.value_chain);
    return apply<operation>(read<Number>(assignment.value_leaf), read<Number>(first.right_leaf));
}

template <typename Number, char operation>
std::uint64_t let_operation(Current at, std::uint64_t budget) {
    const Number value = first_result<Number, operation>(as<AssignmentRecord>(at + 1));
    if (!store_number<Number>(place_of(at + 1), value)) KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(at + 1), budget);
}

template <typename Number, char operation>
std::uint64_t let_operations(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    Token* second = as<OperatorRecord>(assignment.value_chain).next;
    const Number value = call_chain(first_result<Number, operation>(assignment), second);
    if (!store_number<Number>(place_of(at + 1), value)) KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(at + 1), budget);
}

// The operator that a chain behind a leaf begins with.
const Node& first_operation(const Node& value) {
    const Node* first = &value;
    while ((node_at(first->left).kind & has_chain) != 0)
        first = &node_at(first->left);
    return *first;
}

// The handler for a chain behind a leaf of the type; most begin with an operator between two leaves.
template <typename Number>
Execute choose_chain(const Node& value) {
    const Node& first = first_operation(value);
    if (node_at(first.right).kind != (sizeof(Number) == sizeof(double) ? F64 : F32))
        return guarded<let_chain<Number>>;
    const bool alone = &first == &value;
    const Execute handler = choose<'+', '-', '*', '/'>(first.token->kind, [=](auto operation) -> Execute {
        return alone ? guarded<let_operation<Number, operation()>>
                     : guarded<let_operations<Number, operation()>>;
    });
    return handler != nullptr ? handler : guarded<let_chain<Number>>;
}

template <typename Number>
Execute choose_plain(const Node& value) {
    if ((value.kind & has_chain) == 0) return guarded<let_copy<Number>>;
    return (value.kind & leaf_mask) == COMPUTED ? guarded<let_chain<Number>> : choose_chain<Number>(value);
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
                return is_plain<Number>(value.kind) ? choose_plain<Number>(value) : nullptr;
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
