// The whole domain's part of fast/number_steps.h.
#pragma once

#include "fast/step.h"

namespace korvane::fast {

bool set_chained_whole_step(Token* at);
bool set_computed_whole_step(Token* at);
void set_whole_sign_step(Token* at);

}  // namespace korvane::fast
