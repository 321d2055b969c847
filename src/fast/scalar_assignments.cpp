// The name of the scalar is the statement's first token and "=" the second one, whose left_operand is the
// scalar's storage.
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
    return proceed(equals->step.next, budget);
}

template <Type type>
struct LetScalar {
    static constexpr Execute execute = guarded<let_scalar<type>>;
};

// The frequent shapes of a floating target whose right side is plain: a variable or literal of its type, one
// operator between two of them, more behind that, and anything else that is a chain.
template <typename Number>
std::uint64_t let_copy(Current at, std::uint64_t budget) {
    Token* equals = at + 1;
    const auto value = read<Number>(equals->step.operand);
    __builtin_memcpy(place_of(equals), &value, sizeof value);
    return proceed(equals->step.next, budget);
}

template <typename Number>
inline std::uint64_t let_value(Token* at, Number value, std::uint64_t budget) {
    if (!is_finite(value)) return execute_general(at, budget);
    Token* equals = at + 1;
    __builtin_memcpy(place_of(equals), &value, sizeof value);
    return proceed(equals->step.next, budget);
}

template <typename Number>
std::uint64_t let_chain(Current at, std::uint64_t budget) {
    const Token* equals = at + 1;
    return let_value(at, call_chain(read<Number>(equals->step.operand), equals->step.inner), budget);
}

template <typename Number, char operation>
inline Number first_result(const Token* equals, const Token* operation_token) {
    return apply<operation>(read<Number>(equals->step.operand), read<Number>(operation_token->step.operand));
}

template <typename Number, char operation>
std::uint64_t let_operation(Current at, std::uint64_t budget) {
    return let_value(at, first_result<Number, operation>(at + 1, at[1].step.inner), budget);
}

template <typename Number, char operation>
std::uint64_t let_operations(Current at, std::uint64_t budget) {
    const Token* first = at[1].step.inner;
    return let_value(at, call_chain(first_result<Number, operation>(at + 1, first), first->step.next),
                     budget);
}

template <typename Number, char operation>
Execute choose_operation(const Token* first) {
    return first->step.next == nullptr ? guarded<let_operation<Number, operation>>
                                       : guarded<let_operations<Number, operation>>;
}

// The handler for a chain behind a leaf of the type; most begin with an operator between two leaves.
template <typename Number>
Execute choose_chain(const Token* first) {
    if (first->right_kind != (sizeof(Number) == sizeof(double) ? F64 : F32))
        return guarded<let_chain<Number>>;
    switch (first->kind) {
        case '+':
            return choose_operation<Number, '+'>(first);
        case '-':
            return choose_operation<Number, '-'>(first);
        case '*':
            return choose_operation<Number, '*'>(first);
        case '/':
            return choose_operation<Number, '/'>(first);
        default:
            return guarded<let_chain<Number>>;
    }
}

template <typename Number>
Execute choose_plain(const Side& side) {
    if ((side.kind & has_chain) == 0) return guarded<let_copy<Number>>;
    return (side.kind & leaf_mask) == COMPUTED ? guarded<let_chain<Number>>
                                               : choose_chain<Number>(side.inner);
}

// Integer targets: a chain behind a leaf. A computed beginning is a chain behind a zero.
template <typename Integer, Leaf leaf>
std::uint64_t let_whole_chain(Current at, std::uint64_t budget) {
    Token* equals = at + 1;
    Token* inner = equals->step.inner;
    const Whole whole = inner->step.whole(whole_leaf<leaf>(equals->step.operand), inner);
    const auto value = static_cast<Integer>(whole.value);
    if (whole.failed != 0 || value != whole.value) return execute_general(at, budget);
    __builtin_memcpy(place_of(equals), &value, sizeof value);
    return proceed(equals->step.next, budget);
}

template <typename Integer>
Execute choose_whole_chain(std::uint8_t kind) {
    switch (kind) {
        case side_kind(I16, true, Domain::WHOLE):
            return guarded<let_whole_chain<Integer, I16>>;
        case side_kind(I32, true, Domain::WHOLE):
            return guarded<let_whole_chain<Integer, I32>>;
        case side_kind(I64, true, Domain::WHOLE):
        case side_kind(COMPUTED, true, Domain::WHOLE):
            return guarded<let_whole_chain<Integer, I64>>;
        default:
            return nullptr;
    }
}

// The handler for a frequent shape, or null.
Execute choose_shape(Type type, const Side& side) {
    switch (type) {
        case Type::DOUBLE:
            return is_plain<double>(side.kind) ? choose_plain<double>(side) : nullptr;
        case Type::SINGLE:
            return is_plain<float>(side.kind) ? choose_plain<float>(side) : nullptr;
        case Type::INTEGER:
            return choose_whole_chain<std::int16_t>(side.kind);
        case Type::LONG:
            return choose_whole_chain<std::int32_t>(side.kind);
        case Type::INT64:
            return choose_whole_chain<std::int64_t>(side.kind);
        default:
            return nullptr;
    }
}

}  // namespace

[[gnu::cold]] Execute scalar_handler(Type type, const Specialised& value) {
    // What takes string space has to give it back when it fails.
    const Execute shape = value.allocates ? nullptr : choose_shape(type, value.side);
    if (shape != nullptr) return shape;
    return type == Type::STRING ? choose_text_assignment(value.side) : handler_of_number<LetScalar>(type);
}

}  // namespace korvane::fast
