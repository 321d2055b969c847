// The whole domain's part of fast/number_steps.h, and the comparisons, whose results belong to it.
#pragma once

#include "fast/step.h"

namespace korvane::fast {

bool set_chained_whole_step(Token* at);
bool set_computed_whole_step(Token* at);
void set_whole_sign_step(Token* at);

// The step of a relational operator at its first character; `domain` is that in which the operands are
// compared. The operands are the token's left and right sides, and the step begins a chain.
void set_comparison_step(Token* at, Domain domain);

}  // namespace korvane::fast
