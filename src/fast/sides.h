// Evaluating a Side: a leaf, a leaf with a chain behind it, or a chain with a beginning of its own.
#pragma once

#include <cstdint>

#include "fast/records.h"
#include "fast/step.h"
#include "numbers/rounding.h"
#include "platform/processor.h"
#include "platform/stack.h"
#include "values/user_functions.h"

namespace korvane::fast {

template <typename Datum>
inline Datum read(const void* address) {
    Datum datum;
    __builtin_memcpy(&datum, address, sizeof datum);
    return datum;
}

// Starts a chain with an accumulator of its domain.
inline double call_chain(double accumulator, Token* first) {
    KORVANE_JUMP return as<StepRecord>(first).function.real(accumulator, first);
}
inline float call_chain(float accumulator, Token* first) {
    KORVANE_JUMP return as<StepRecord>(first).function.single(accumulator, first);
}
inline WholeResult call_chain(std::int64_t accumulator, Token* first) {
    KORVANE_JUMP return as<StepRecord>(first).function.whole(accumulator, first);
}

// Hands the accumulator to the next step of the chain, if there is one: the last thing that a step does.
inline double go_on(double accumulator, Token* at) {
    Token* next = as<StepRecord>(at).next;
    if (next == nullptr) return accumulator;
    KORVANE_JUMP return call_chain(accumulator, next);
}
inline float go_on_single(float accumulator, Token* at) {
    Token* next = as<StepRecord>(at).next;
    if (next == nullptr) return accumulator;
    KORVANE_JUMP return call_chain(accumulator, next);
}
inline WholeResult go_on_whole(std::int64_t accumulator, Token* at) {
    Token* next = as<StepRecord>(at).next;
    if (next == nullptr) return Whole{accumulator, 0};
    KORVANE_JUMP return call_chain(accumulator, next);
}

// A leaf as a double, a float or an integer. Integers convert exactly or, beyond 2^53, rounded to nearest.
template <Leaf leaf>
inline double real_leaf(const void* place) {
    if constexpr (leaf == F64) return read<double>(place);
    if constexpr (leaf == F32) return read<float>(place);
    if constexpr (leaf == I16) return read<std::int16_t>(place);
    if constexpr (leaf == I32) return read<std::int32_t>(place);
    if constexpr (leaf == I64) return static_cast<double>(read<std::int64_t>(place));
    return 0;
}
template <Leaf leaf>
inline std::int64_t whole_leaf(const void* place) {
    if constexpr (leaf == I16) return read<std::int16_t>(place);
    if constexpr (leaf == I32) return read<std::int32_t>(place);
    if constexpr (leaf == I64) return read<std::int64_t>(place);
    return 0;
}

// A Side of any kind in the domain that is wanted. Not inlined: the frequent kinds have steps of their own.
double real_side(std::uint8_t kind, const void* leaf, Token* chain);  // a NaN when it failed
WholeResult whole_side(std::uint8_t kind, const void* leaf,
                       Token* chain);  // floats are rounded, halves away from 0

// Notes a call of a user function, as every call is; false when it is not to be made. When Escape ends the
// statement, what is specialised gives up: the general handler, which executes the statement anew, finds the
// Escape that is pending and can break.
bool refuse_call();
inline bool may_call_user() {
    return !stack_exhausted() && (may_call() || refuse_call());
}

// The plain sides: a leaf of the domain's own type with or without a chain of the domain, or such a chain
// with a beginning of its own. They are evaluated without looking at their kind.
constexpr bool is_plain(std::uint8_t kind, Leaf leaf, Domain domain) {
    return kind == side_kind(leaf, true, domain) || kind == computed_kind(domain) ||
           (kind & ~(3U << domain_shift)) == side_kind(leaf, false, Domain::real);
}
template <typename Number>
constexpr bool is_plain(std::uint8_t kind) {
    return sizeof(Number) == sizeof(double) ? is_plain(kind, F64, Domain::real)
                                            : is_plain(kind, F32, Domain::single);
}

template <typename Number>
inline Number plain_right(const Token* at) {
    const auto& holder = as<HolderRecord>(at);
    const auto leaf = read<Number>(holder.value_leaf);
    return holder.value_chain == nullptr ? leaf : call_chain(leaf, holder.value_chain);
}
template <typename Number>
inline Number plain_left(const Token* at) {
    const auto& record = as<OperatorRecord>(at);
    const auto leaf = read<Number>(record.left_leaf);
    return record.left_chain == nullptr ? leaf : call_chain(leaf, record.left_chain);
}

inline double right_real(const Token* at) {
    const auto& holder = as<HolderRecord>(at);
    return real_side(holder.value_kind, holder.value_leaf, holder.value_chain);
}
inline Whole right_whole(const Token* at) {
    const auto& holder = as<HolderRecord>(at);
    return whole_side(holder.value_kind, holder.value_leaf, holder.value_chain);
}
// The same where the frequent kinds are worth a look of their own.
inline double quick_right_real(const Token* at) {
    constexpr std::uint32_t plain_kinds =
        1U << F64 | 1U << side_kind(F64, true, Domain::real) | 1U << computed_kind(Domain::real);
    const std::uint8_t kind = as<HolderRecord>(at).value_kind;
    const bool plain = kind < 32 && (plain_kinds >> kind & 1) != 0;
    return plain ? plain_right<double>(at) : right_real(at);
}
inline Whole quick_right_whole(const Token* at) {
    const auto& holder = as<HolderRecord>(at);
    if (holder.value_kind == side_kind(I16, false, Domain::whole))
        return {whole_leaf<I16>(holder.value_leaf), 0};
    if (holder.value_kind == side_kind(I64, false, Domain::whole))
        return {whole_leaf<I64>(holder.value_leaf), 0};
    return right_whole(at);
}

inline double left_real(const Token* at) {
    const auto& record = as<OperatorRecord>(at);
    return real_side(record.left_kind, record.left_leaf, record.left_chain);
}
inline Whole left_whole(const Token* at) {
    const auto& record = as<OperatorRecord>(at);
    return whole_side(record.left_kind, record.left_leaf, record.left_chain);
}

// A double rounded to an integer; failed outside the INT64 range.
inline Whole round_whole(double x) {
    Whole whole{0, 0};
    return nearest_integer(x, whole.value) ? whole : no_whole;
}

// The right side as a subscript or a count, which may be of any kind.
inline Whole quick_right_index(const Token* at) {
    const bool whole = domain_of_kind(as<HolderRecord>(at).value_kind) == Domain::whole;
    return whole ? quick_right_whole(at) : round_whole(quick_right_real(at));
}

}  // namespace korvane::fast
