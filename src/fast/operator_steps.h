// The steps of numeric operators, picked by operator, by domain and by what the right operand is.
#pragma once

#include "fast/step.h"

namespace korvane::fast {

// Sets the step function of the operator token `at` for the domain of its result: + - * / and ^ in the real
// domain, + - * / in the single domain, + - * \ and the keyword operators in the whole domain. The
// accumulator carries the left operand; the right one is the record's right side.
[[gnu::cold]] void set_chained_step(Token* at, Domain domain);

// The same for a left operand that the accumulator cannot carry, because it belongs to another domain: it is
// the record's left side, and the step begins a chain.
[[gnu::cold]] void set_computed_step(Token* at, Domain domain);

// "-" as a sign and NOT: the operand is the token's right side, and the step begins a chain.
[[gnu::cold]] void set_sign_step(Token* at, Domain domain);
[[gnu::cold]] void set_not_step(Token* at);

}  // namespace korvane::fast
