// The real domain's part of fast/number_steps.h.
#pragma once

#include "program/token.h"

namespace korvane::fast {

bool set_chained_real_step(Token* at);
bool set_computed_real_step(Token* at);
void set_real_sign_step(Token* at);

}  // namespace korvane::fast
