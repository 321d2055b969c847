#include "values/power.h"

#include <cstdint>

#include "numbers/kernels.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {
namespace {

constexpr double squaring_limit = 65536;

// base^exponent as a product of squares, for the bits of the exponent from the lowest up.
double repeated_squaring(double base, std::int32_t exponent) {
    std::int32_t rest = exponent < 0 ? -exponent : exponent;
    double product = 1;
    while (rest != 0) {
        if ((rest & 1) != 0) product *= base;
        base *= base;
        rest >>= 1;
    }
    return exponent < 0 ? 1 / product : product;
}

bool is_squaring_exponent(double exponent) {
    return __builtin_fabs(exponent) <= squaring_limit && static_cast<std::int32_t>(exponent) == exponent;
}

}  // namespace

double power_or_nan(double base, double exponent) {
    if (exponent == 0) return 1;
    if (base == 0) return exponent > 0 ? 0 : __builtin_nan("");
    if (is_squaring_exponent(exponent)) return repeated_squaring(base, static_cast<std::int32_t>(exponent));
    return base < 0 ? __builtin_nan("") : kernel_pow(base, exponent);
}

double power(double base, double exponent) {
    const double result = power_or_nan(base, exponent);
    if (__builtin_isfinite(result)) return result;
    if (base == 0 && exponent < 0)
        raise(message::division_by_zero);
    else if (base < 0 && !is_squaring_exponent(exponent))
        raise(message::illegal_function_call);
    else
        raise(message::overflow);
    return 0;
}

}  // namespace korvane
