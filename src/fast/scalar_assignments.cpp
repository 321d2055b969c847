// The name of the scalar is the statement's first token and "=" the second one, which holds the place
// and the value.
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
    return proceed(after(equals), budget);
}

// The frequent shapes of a floating target whose right side is plain: a variable or literal of its type, one
// operator between two of them, more behind that, and anything else that is a chain.
template <typename Number>
std::uint64_t let_copy(Current at, std::uint64_t budget) {
    Token* equals = at + 1;
    write_unaligned(place_of(equals), read<Number>(as<AssignmentRecord>(equals).value_leaf));
    return proceed(after(equals), budget);
}

template <typename Number>
inline std::uint64_t let_value(Token* at, Number value, std::uint64_t budget) {
    Token* equals = at + 1;
    if (!store_number<Number>(place_of(equals), value)) return execute_general(at, budget);
    return proceed(after(equals), budget);
}

template <typename Number>
std::uint64_t let_chain(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    return let_value(at, call_chain(read<Number>(assignment.value_leaf), assignment.value_chain), budget);
}

template <typename Number, char operation>
inline Number first_result(const AssignmentRecord& assignment) {
    const auto& first = as<OperatorRecord>(assignment.value_chain);
    return apply<operation>(read<Number>(assignment.value_leaf), read<Number>(first.right_leaf));
}

template <typename Number, char operation>
std::uint64_t let_operation(Current at, std::uint64_t budget) {
    return let_value(at, first_result<Number, operation>(as<AssignmentRecord>(at + 1)), budget);
}

template <typename Number, char operation>
std::uint64_t let_operations(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    Token* second = as<OperatorRecord>(assignment.value_chain).next;
    return let_value(at, call_chain(first_result<Number, operation>(assignment), second), budget);
}

template <typename Number, char operation>
Execute choose_operation(const Token* first) {
    return as<OperatorRecord>(first).next == nullptr ? guarded<let_operation<Number, operation>>
                                                     : guarded<let_operations<Number, operation>>;
}

// The handler for a chain behind a leaf of the type; most begin with an operator between two leaves.
template <typename Number>
Execute choose_chain(const Token* first) {
    if (as<OperatorRecord>(first).right_kind != (sizeof(Number) == sizeof(double) ? F64 : F32))
        return guarded<let_chain<Number>>;
    const Execute handler = choose<'+', '-', '*', '/'>(
        first->kind, [=](auto operation) { return choose_operation<Number, operation()>(first); });
    return handler != nullptr ? handler : guarded<let_chain<Number>>;
}

template <typename Number>
Execute choose_plain(const Side& side) {
    if ((side.kind & has_chain) == 0) return guarded<let_copy<Number>>;
    return (side.kind & leaf_mask) == COMPUTED ? guarded<let_chain<Number>>
                                               : choose_chain<Number>(side.chain);
}

// Integer targets: a chain behind a leaf. A computed beginning is a chain behind a zero.
template <typename Integer, Leaf leaf>
std::uint64_t let_whole_chain(Current at, std::uint64_t budget) {
    const auto& assignment = as<AssignmentRecord>(at + 1);
    const Whole whole = call_chain(whole_leaf<leaf>(assignment.value_leaf), assignment.value_chain);
    if (whole.failed != 0 || !store_number<Integer>(assignment.place, whole.value))
        return execute_general(at, budget);
    return proceed(assignment.after, budget);
}

template <typename Integer>
Execute choose_whole_chain(std::uint8_t kind) {
    if ((kind & has_chain) == 0 || domain_of_kind(kind) != Domain::WHOLE) return nullptr;
    const auto leaf = static_cast<Leaf>(kind & leaf_mask);
    return choose<I16, I32, I64>(leaf == COMPUTED ? I64 : leaf, [](auto listed) -> Execute {
        return guarded<let_whole_chain<Integer, listed()>>;
    });
}

// The handler for a frequent shape, or null.
Execute choose_shape(Type type, const Side& side) {
    return choose_by_type(type, [&side](auto listed) -> Execute {
        using Number = NumberOf<listed()>;
        if constexpr (is_integer(listed())) return choose_whole_chain<Number>(side.kind);
        if constexpr (is_floating(listed()))
            return is_plain<Number>(side.kind) ? choose_plain<Number>(side) : nullptr;
    });
}

}  // namespace

[[gnu::cold]] Execute scalar_handler(Type type, const Specialised& value) {
    // What takes string space has to give it back when it fails.
    const Execute shape = value.allocates ? nullptr : choose_shape(type, value.side);
    if (shape != nullptr) return shape;
    if (type == Type::STRING) return choose_text_assignment(value);
    return choose_by_type(type, [](auto listed) -> Execute { return guarded<let_scalar<listed()>>; });
}

}  // namespace korvane::fast
