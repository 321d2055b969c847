// Comparisons of numbers: steps that compare in the domain of their operands and begin a chain of the whole
// domain with -1 or 0.
#pragma once

#include "fast/step.h"
#include "values/relations.h"

namespace korvane::fast {

// The step of a relational operator between numbers: `domain` is that in which its left and right sides are
// compared. With care, which the real and whole domains know, the sides are evaluated in order, and doubles
// are compared only where they are certainly exact; else the sides may change places.
void set_comparison_step(Token* at, Domain domain, bool with_care);

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
