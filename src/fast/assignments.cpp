// Specialised assignments. "=" holds the expression as its right side, the place in left_operand and the
// following statement in next.
#include "core/keywords.h"
#include "core/parse.h"
#include "fast/arithmetic.h"
#include "fast/elements.h"
#include "fast/expression.h"
#include "fast/sides.h"
#include "fast/links.h"
#include "fast/statement.h"
#include "fast/text_assignments.h"
#include "platform/memory.h"
#include "values/functions.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// Writes the value of the right side of `equals` to a place of the type; false when the general handler has
// to do it.
template <Type type>
inline bool assign(std::uint8_t* place, const Token* equals) {
    if constexpr (type == Type::DOUBLE) {
        const double value = quick_right_real(equals);
        if (!is_finite(value)) return false;
        __builtin_memcpy(place, &value, sizeof value);
    } else if constexpr (type == Type::SINGLE) {
        const double value = right_real(equals);
        if (!is_finite(value)) return false;
        const auto narrow = static_cast<float>(value);
        __builtin_memcpy(place, &narrow, sizeof narrow);
    } else {
        const Whole value = quick_right_whole(equals);
        if (value.failed != 0) return false;
        if constexpr (type == Type::INTEGER) {
            const auto narrow = static_cast<std::int16_t>(value.value);
            if (narrow != value.value) return false;
            __builtin_memcpy(place, &narrow, sizeof narrow);
        } else if constexpr (type == Type::LONG) {
            const auto narrow = static_cast<std::int32_t>(value.value);
            if (narrow != value.value) return false;
            __builtin_memcpy(place, &narrow, sizeof narrow);
        } else {
            __builtin_memcpy(place, &value.value, sizeof value.value);
        }
    }
    return true;
}

inline std::uint8_t* place_of(const Token* equals) {
    return static_cast<std::uint8_t*>(const_cast<void*>(equals->step.left_operand));
}

template <Type type>
std::uint64_t let_scalar(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    Token* equals = at + 1;
    std::uint8_t* string_top = arenas.FREETOP;
    if (!assign<type>(place_of(equals), equals)) return fall_back(at, left, string_top);
    return proceed(equals->step.next, left);
}

// The frequent shapes of a floating target whose right side is plain: a variable or literal of its type, one
// operator between two of them, more behind that, and anything else that is a chain.
template <typename Number>
std::uint64_t let_copy(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    Token* equals = at + 1;
    const auto value = read<Number>(equals->step.operand);
    __builtin_memcpy(place_of(equals), &value, sizeof value);
    return proceed(equals->step.next, left);
}

template <typename Number>
inline std::uint64_t let_value(Token* at, Number value, std::uint64_t left) {
    if (!is_finite(value)) return execute_general(at, left);
    Token* equals = at + 1;
    __builtin_memcpy(place_of(equals), &value, sizeof value);
    return proceed(equals->step.next, left);
}

template <typename Number>
std::uint64_t let_chain(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    const Token* equals = at + 1;
    return let_value(at, call_chain(read<Number>(equals->step.operand), equals->step.inner), left);
}

template <typename Number, char operation>
inline Number first_result(const Token* equals, const Token* operation_token) {
    return apply<operation>(read<Number>(equals->step.operand), read<Number>(operation_token->step.operand));
}

template <typename Number, char operation>
std::uint64_t let_operation(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    return let_value(at, first_result<Number, operation>(at + 1, at[1].step.inner), left);
}

template <typename Number, char operation>
std::uint64_t let_operations(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    const Token* first = at[1].step.inner;
    return let_value(at, call_chain(first_result<Number, operation>(at + 1, first), first->step.next), left);
}

template <typename Number, char operation>
Execute choose_operation(const Token* first) {
    return first->step.next == nullptr ? let_operation<Number, operation> : let_operations<Number, operation>;
}

// The handler for a chain behind a leaf of the type; most begin with an operator between two leaves.
template <typename Number>
Execute choose_chain(const Token* first) {
    if (first->right_kind != (sizeof(Number) == sizeof(double) ? F64 : F32)) return let_chain<Number>;
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
            return let_chain<Number>;
    }
}

template <typename Number>
Execute choose_plain(const Side& side) {
    if ((side.kind & has_chain) == 0) return let_copy<Number>;
    return (side.kind & leaf_mask) == COMPUTED ? let_chain<Number> : choose_chain<Number>(side.inner);
}

// Integer targets: a chain behind a leaf. A computed beginning is a chain behind a zero.
template <typename Integer, Leaf leaf>
std::uint64_t let_whole_chain(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    Token* equals = at + 1;
    Token* inner = equals->step.inner;
    const Whole whole = inner->step.whole(whole_leaf<leaf>(equals->step.operand), inner);
    const auto value = static_cast<Integer>(whole.value);
    if (whole.failed != 0 || value != whole.value) return execute_general(at, left);
    __builtin_memcpy(place_of(equals), &value, sizeof value);
    return proceed(equals->step.next, left);
}

template <typename Integer>
Execute choose_whole_chain(std::uint8_t kind) {
    switch (kind) {
        case side_kind(I16, true, Domain::WHOLE):
            return let_whole_chain<Integer, I16>;
        case side_kind(I32, true, Domain::WHOLE):
            return let_whole_chain<Integer, I32>;
        case side_kind(I64, true, Domain::WHOLE):
        case side_kind(COMPUTED, true, Domain::WHOLE):
            return let_whole_chain<Integer, I64>;
        default:
            return nullptr;
    }
}

// The bracket of an element that is assigned to begins no chain; its next leads to "=".
template <Type type>
std::uint64_t let_element(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    Token* equals = at[1].step.next;
    std::uint8_t* string_top = arenas.FREETOP;
    std::uint8_t* place = find_element<storage_size(type), Subscripts::ANY>(at + 1);
    if (place == nullptr || !assign<type>(place, equals)) return fall_back(at, left, string_top);
    return proceed(equals->step.next, left);
}

// The frequent shapes, whose value can be taken before the element is found: a plain side for a DOUBLE
// element, and a literal for an INTEGER one.
template <Subscripts subscripts>
std::uint64_t let_plain_element(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    const auto value = plain_right<double>(at[1].step.next);
    std::uint8_t* place = find_element<8, subscripts>(at + 1);
    if (place == nullptr || !is_finite(value)) return execute_general(at, left);
    __builtin_memcpy(place, &value, sizeof value);
    return proceed(at[1].step.next->step.next, left);
}

std::uint64_t let_integer_element(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    const Token* equals = at[1].step.next;
    const auto literal = read<std::int64_t>(equals->step.operand);
    const auto value = static_cast<std::int16_t>(literal);
    std::uint8_t* place = find_element<2, Subscripts::ONE>(at + 1);
    if (place == nullptr || value != literal) return execute_general(at, left);
    __builtin_memcpy(place, &value, sizeof value);
    return proceed(equals->step.next, left);
}

Execute choose_scalar(Type type, const Side& value) {
    switch (type) {
        case Type::INTEGER:
            return let_scalar<Type::INTEGER>;
        case Type::LONG:
            return let_scalar<Type::LONG>;
        case Type::INT64:
            return let_scalar<Type::INT64>;
        case Type::SINGLE:
            return let_scalar<Type::SINGLE>;
        case Type::DOUBLE:
            return let_scalar<Type::DOUBLE>;
        default:
            return choose_text_assignment(value);
    }
}

Execute choose_element(Type type, const Side& value) {
    switch (type) {
        case Type::INTEGER:
            return let_element<Type::INTEGER>;
        case Type::LONG:
            return let_element<Type::LONG>;
        case Type::INT64:
            return let_element<Type::INT64>;
        case Type::SINGLE:
            return let_element<Type::SINGLE>;
        case Type::DOUBLE:
            return let_element<Type::DOUBLE>;
        default:
            return choose_text_element_assignment(value);
    }
}

// The handler for a frequent shape, or null.
Execute choose_element_shape(const Token* bracket, Type type, std::uint8_t value_kind) {
    const Subscripts subscripts = subscripts_of(bracket);
    if (subscripts == Subscripts::ANY) return nullptr;
    if (type == Type::DOUBLE && is_plain<double>(value_kind)) {
        return subscripts == Subscripts::ONE ? let_plain_element<Subscripts::ONE>
                                             : let_plain_element<Subscripts::TWO>;
    }
    const bool literal = value_kind == side_kind(I64, false, Domain::WHOLE);
    return type == Type::INTEGER && subscripts == Subscripts::ONE && literal ? let_integer_element : nullptr;
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

// The expression behind "=": it must be of the target's kind and end the statement.
bool specialise_value(Token* equals, Type type, Specialised& value) {
    if (equals->kind != '=' || !specialise(equals + 1, domain_of(type), value)) return false;
    if ((value.side.type == Type::STRING) != (type == Type::STRING)) return false;
    hold(equals, value.side);
    equals->step.next = link_behind_assignment(value.end);
    return true;
}

bool specialise_scalar(Token* at) {
    if (is_system_variable(at->name)) return false;
    const VariableEntry* entry = find_variable(at->name, false);
    Specialised value;
    if (entry == nullptr || !specialise_value(at + 1, entry->type, value)) return false;
    at[1].step.left_operand = entry->storage;
    // What takes string space has to give it back when it fails.
    const Execute shape = value.allocates ? nullptr : choose_shape(entry->type, value.side);
    at->execute = shape != nullptr ? shape : choose_scalar(entry->type, value.side);
    return true;
}

bool specialise_array_element(Token* at) {
    Specialised element;
    Specialised value;
    if (!specialise_element(at, element) || !specialise_value(element.end, element.side.type, value))
        return false;
    at[1].step.next = element.end;
    // What takes string space has to give it back when it fails.
    const Execute shape = element.allocates || value.allocates
                              ? nullptr
                              : choose_element_shape(at + 1, element.side.type, value.side.kind);
    at->execute = shape != nullptr ? shape : choose_element(element.side.type, value.side);
    return true;
}

// Behind THEN, what was kept for the word is good for the assignment too.
std::uint64_t let_with_word(Token* at, std::uint64_t left) {
    if (!is_current(at)) return execute_first(at, left);
    if (state.kept_token == at) state.kept_token = at + 1;
    return at[1].execute(at + 1, left);
}

}  // namespace

bool specialise_assignment(Token* at) {
    if (at->kind == KW_LET) {
        if (at[1].kind != IDENTIFIER || !specialise_assignment(at + 1)) return false;
        enter_generation(at + 1);
        at->execute = let_with_word;
        return true;
    }
    if (at[1].kind != '(') return specialise_scalar(at);
    return !is_word(at, "MID$") && !is_word(at, "TIMER") && specialise_array_element(at);
}

}  // namespace korvane::fast
