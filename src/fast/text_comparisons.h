// Comparisons of texts: steps that begin a chain of the whole domain with -1 or 0.
#pragma once

#include "fast/step.h"

namespace korvane::fast {

// Which Outcome (values/relations.h) the comparison of two texts has.
std::uint8_t order_of_texts(Value left, Value right);

// The step of a relational operator at its first character, whose left and right sides are texts.
[[gnu::cold]] void set_text_comparison_step(Token* at);

}  // namespace korvane::fast
