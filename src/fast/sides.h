// Evaluating a Side: a leaf, a leaf with a chain behind it, or a chain with a beginning of its own.
#pragma once

#include <cstdint>

#include "fast/step.h"
#include "numbers/rounding.h"

namespace korvane::fast {

template <typename Datum>
inline Datum read(const void* address) {
    Datum datum;
    __builtin_memcpy(&datum, address, sizeof datum);
    return datum;
}

// Hands the accumulator to the next step of the chain, if there is one.
inline double go_on(double accumulator, Token* at) {
    Token* next = at->step.next;
    return next == nullptr ? accumulator : next->step.real(accumulator, next);
}
inline float go_on_single(float accumulator, Token* at) {
    Token* next = at->step.next;
    return next == nullptr ? accumulator : next->step.single(accumulator, next);
}
inline Whole go_on_whole(std::int64_t accumulator, Token* at) {
    Token* next = at->step.next;
    return next == nullptr ? Whole{accumulator, 0} : next->step.whole(accumulator, next);
}

// A leaf as a double, a float or an integer. Integers convert exactly or, beyond 2^53, rounded to nearest.
template <Leaf leaf>
inline double real_leaf(const void* operand) {
    if constexpr (leaf == F64) return read<double>(operand);
    if constexpr (leaf == F32) return read<float>(operand);
    if constexpr (leaf == I16) return read<std::int16_t>(operand);
    if constexpr (leaf == I32) return read<std::int32_t>(operand);
    if constexpr (leaf == I64) return static_cast<double>(read<std::int64_t>(operand));
    return 0;
}
template <Leaf leaf>
inline std::int64_t whole_leaf(const void* operand) {
    if constexpr (leaf == I16) return read<std::int16_t>(operand);
    if constexpr (leaf == I32) return read<std::int32_t>(operand);
    if constexpr (leaf == I64) return read<std::int64_t>(operand);
    return 0;
}

// A Side of any kind in the domain that is wanted. Not inlined: the frequent kinds have steps of their own.
double real_side(std::uint8_t kind, const void* operand, Token* inner);  // a NaN when it failed
Whole whole_side(std::uint8_t kind, const void* operand,
                 Token* inner);  // floats are rounded, halves away from 0

// The plain sides: a leaf of the domain's own type with or without a chain of the domain, or such a chain
// with a beginning of its own. They are evaluated without looking at their kind.
constexpr bool is_plain(std::uint8_t kind, Leaf leaf, Domain domain) {
    return kind == side_kind(leaf, true, domain) || kind == side_kind(COMPUTED, true, domain) ||
           (kind & ~(3U << domain_shift)) == side_kind(leaf, false, Domain::REAL);
}
template <typename Number>
constexpr bool is_plain(std::uint8_t kind) {
    return sizeof(Number) == sizeof(double) ? is_plain(kind, F64, Domain::REAL)
                                            : is_plain(kind, F32, Domain::SINGLE);
}

inline double call_chain(double accumulator, Token* first) {
    return first->step.real(accumulator, first);
}
inline float call_chain(float accumulator, Token* first) {
    return first->step.single(accumulator, first);
}

template <typename Number>
inline Number plain_right(const Token* at) {
    const auto leaf = read<Number>(at->step.operand);
    return at->step.inner == nullptr ? leaf : call_chain(leaf, at->step.inner);
}
template <typename Number>
inline Number plain_left(const Token* at) {
    const auto leaf = read<Number>(at->step.left_operand);
    return at->step.left_inner == nullptr ? leaf : call_chain(leaf, at->step.left_inner);
}

inline double right_real(const Token* at) {
    return real_side(at->right_kind, at->step.operand, at->step.inner);
}
inline Whole right_whole(const Token* at) {
    return whole_side(at->right_kind, at->step.operand, at->step.inner);
}
// The same where the frequent kinds are worth a look of their own.
inline double quick_right_real(const Token* at) {
    constexpr std::uint32_t plain_kinds =
        1U << F64 | 1U << side_kind(F64, true, Domain::REAL) | 1U << side_kind(COMPUTED, true, Domain::REAL);
    const bool plain = at->right_kind < 32 && (plain_kinds >> at->right_kind & 1) != 0;
    return plain ? plain_right<double>(at) : right_real(at);
}
inline Whole quick_right_whole(const Token* at) {
    if (at->right_kind == side_kind(I16, false, Domain::WHOLE)) return {whole_leaf<I16>(at->step.operand), 0};
    if (at->right_kind == side_kind(I64, false, Domain::WHOLE)) return {whole_leaf<I64>(at->step.operand), 0};
    return right_whole(at);
}

inline double left_real(const Token* at) {
    return real_side(at->left_kind, at->step.left_operand, at->step.left_inner);
}
inline Whole left_whole(const Token* at) {
    return whole_side(at->left_kind, at->step.left_operand, at->step.left_inner);
}

// A double rounded to an integer, halves away from zero; failed outside the INT64 range.
inline Whole round_whole(double x) {
    std::int64_t whole;
    if (!round_to_nearest(x, whole)) return {0, 1};
    return {whole, 0};
}

// The right side as a subscript or a count, which may be of any kind.
inline Whole quick_right_index(const Token* at) {
    const bool whole = domain_of_kind(at->right_kind) == Domain::WHOLE;
    return whole ? quick_right_whole(at) : round_whole(quick_right_real(at));
}

}  // namespace korvane::fast
