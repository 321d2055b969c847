// The single domain's part of fast/number_steps.h.
#pragma once

#include "program/token.h"

namespace korvane::fast {

bool set_chained_single_step(Token* at);
bool set_computed_single_step(Token* at);
void set_single_sign_step(Token* at);

}  // namespace korvane::fast
