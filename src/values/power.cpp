#include "values/power.h"

#include <cstdint>

#include "core/errors.h"
#include "core/messages.h"
#include "values/kernels.h"

namespace korvane {
namespace {

constexpr double squaring_limit = 65536;

double fail(const char* error_message) {
    raise(error_message);
    return 0;
}

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

// The cases in which neither operand is zero.
double general_power(double base, double exponent) {
    if (__builtin_fabs(exponent) <= squaring_limit) {
        const auto integral = static_cast<std::int32_t>(exponent);
        if (integral == exponent) return repeated_squaring(base, integral);
    }
    if (base < 0) return fail(message::illegal_function_call);
    return kernel_pow(base, exponent);
}

}  // namespace

double power(double base, double exponent) {
    if (exponent == 0) return 1;
    if (base == 0) return exponent < 0 ? fail(message::division_by_zero) : 0;
    const double result = general_power(base, exponent);
    if (__builtin_isfinite(result)) return result;
    return fail(message::overflow);
}

}  // namespace korvane
