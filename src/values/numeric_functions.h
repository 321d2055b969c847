// Built-in functions of numbers. Each takes its evaluated argument; a string raises "Type mismatch".
#pragma once

#include "numbers/value.h"

namespace korvane {

// Keep their argument's type. ABS of the most negative INT64 raises "Overflow".
Value function_abs(const Value& number);
Value function_int(const Value& number);  // floor
Value function_fix(const Value& number);  // truncation toward zero
Value function_sgn(const Value& number);  // -1, 0 or 1 as an INTEGER

// Give a DOUBLE.
Value function_sin(const Value& angle);
Value function_cos(const Value& angle);
Value function_tan(const Value& angle);
Value function_atn(const Value& tangent);
Value function_exp(const Value& x);  // "Overflow" above 709.78; 0 below -745
Value function_log(const Value& x);  // "Illegal function call" for x <= 0
Value function_sqr(const Value& x);  // "Illegal function call" for x < 0

// Conversions. CINT gives an INT64, halves rounded away from zero;
// CSNG raises "Overflow" outside SINGLE's range.
Value function_cint(const Value& number);
Value function_csng(const Value& number);
Value function_cdbl(const Value& number);

// Random numbers; values/random.h has the generator.
Value function_rnd_bare();
Value function_rnd(const Value& number);

}  // namespace korvane
