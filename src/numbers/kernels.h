// The numeric kernels: binary64 functions of our own, built on SSE2 arithmetic alone.
//
// Except for kernel_sqrt(), which is exact to the last bit, each result lies within 0.6 units in the last
// place of the true value (subnormal results within 1), for arguments of every magnitude;
// tests/unit/kernels_test.cpp measures it. No kernel raises an error: a NaN gives a NaN, and what an argument
// outside the function's domain gives is stated below. The method is table lookup with a short polynomial,
// the leading term kept to about 100 bits.
#pragma once

#include "platform/processor.h"

namespace korvane {

// Sine, cosine and tangent of an angle in radians, with exact argument reduction; a NaN for an infinity.
double kernel_sin(double angle);
double kernel_cos(double angle);
double kernel_tan(double angle);

// Arctangent, from -pi/2 to pi/2.
double kernel_atan(double tangent);

// e^x; an infinity above 709.78 and 0 below -745,
// deliberately a little inside what a binary64 number could hold.
double kernel_exp(double x);

// Natural logarithm; a NaN for negative numbers, minus infinity for 0.
double kernel_log(double x);

// base^exponent for a positive base, as e^(exponent ln base) with a logarithm of about 68 bits; an
// infinity or 0 where the result leaves the binary64 range, and a NaN for 1 to the power of an infinity.
double kernel_pow(double base, double exponent);

// Square root by the processor's instruction, correctly rounded; a NaN for negative numbers.
inline double kernel_sqrt(double x) {
    return processor_sqrt(x);
}

}  // namespace korvane
