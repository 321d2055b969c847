// The condition that an IF or WHILE holds as its right side.
#pragma once

#include "fast/expression.h"
#include "fast/sides.h"

namespace korvane::fast {

enum class Truth : std::uint8_t { FALSE, TRUE, FAILED };

inline Truth truth_of(const Whole& value) {
    if (__builtin_expect(value.failed != 0, false)) return Truth::FAILED;
    return value.value != 0 ? Truth::TRUE : Truth::FALSE;
}

// A number or a variable as a condition.
Truth plain_condition(const Token* at);

// Most conditions begin with a comparison, which is a chain of the whole domain without a leaf in front.
inline bool is_computed(const Side& side) {
    return side.kind == side_kind(COMPUTED, true, Domain::WHOLE);
}

template <bool computed>
inline Truth condition(const Token* at) {
    if constexpr (computed) return truth_of(at->step.inner->step.whole(0, at->step.inner));
    return plain_condition(at);
}

}  // namespace korvane::fast
