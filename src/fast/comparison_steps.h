// Comparisons of numbers: steps that compare in the domain of their operands and begin a chain of the whole
// domain with -1 or 0.
#pragma once

#include "fast/step.h"
#include "values/relations.h"

namespace korvane::fast {

// How two numbers are compared.
enum class Comparison : std::uint8_t {
    direct,
    checked,  // as doubles; one comes from an integer that may be too large for that
    ordered,  // the left one is evaluated first, because both take string space
};

// The step of a relational operator between numbers: `domain` is that in which its left and right sides are
// compared. The sides may change places unless the comparison is `ordered`, which is for the real and whole
// domains only.
void set_comparison_step(Token* at, Domain domain, Comparison comparison);

// The relation that such a step asks for, whose sides are in order: it is not GREATER, with EQUAL or without.
int lesser_first(const Token* at);

// Whether a relation in order is true.
template <int relation, typename Number>
inline bool holds(Number left, Number right) {
    if constexpr (relation == LESS) return left < right;
    if constexpr (relation == EQUAL) return left == right;
    if constexpr (relation == (LESS | EQUAL)) return left <= right;
    return left != right;
}

}  // namespace korvane::fast
