// The operator ^.
#pragma once

namespace korvane {

// base^exponent: 1 for exponent 0, also with base 0. For base 0 otherwise 0, or "Division by zero" when the
// exponent is negative. An integral exponent up to 65536 in magnitude is computed by repeated squaring, a
// negative one as the reciprocal of that product. Any other exponent of a negative base is an "Illegal
// function call", of a positive one e^(exponent ln base). An infinite result or a NaN is "Overflow". Gives 0
// with an error.
double power(double base, double exponent);

// The same without raising anything: where power() raises an error this gives an infinity or a NaN.
double power_or_nan(double base, double exponent);

}  // namespace korvane
