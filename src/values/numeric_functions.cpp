#include "values/numeric_functions.h"

#include "numbers/kernels.h"
#include "numbers/rounding.h"
#include "program/errors.h"
#include "program/messages.h"
#include "values/convert.h"
#include "values/functions.h"
#include "values/operators.h"
#include "values/random.h"

namespace korvane {
namespace {

// A kernel's result, or the error that explains why it is no number.
Value finite(double result) {
    return __builtin_isfinite(result) ? Value::of_real(result) : fail(message::overflow);
}

using Kernel = double (*)(double);

Value apply(Kernel kernel, const Value& argument) {
    const double x = to_double(argument);
    return error_pending() ? Value::nothing() : finite(kernel(x));
}

// The kernel of a function that keeps its argument's type and leaves integers alone.
Value apply_keeping_type(Kernel kernel, const Value& number) {
    if (is_integer(number.type)) return number;
    if (number.type == Type::STRING) return fail(message::type_mismatch);
    return Value::of_real(kernel(number.real), number.type);
}

}  // namespace

Value function_abs(const Value& number) {
    const bool negative = is_integer(number.type) ? number.integer < 0 : __builtin_signbit(number.real) != 0;
    if (number.type == Type::STRING) return fail(message::type_mismatch);
    return negative ? negate(number) : number;
}

Value function_int(const Value& number) {
    return apply_keeping_type(rounded_down, number);
}
Value function_fix(const Value& number) {
    return apply_keeping_type(truncated, number);
}

Value function_sgn(const Value& number) {
    if (number.type == Type::STRING) return fail(message::type_mismatch);
    const int sign = is_integer(number.type) ? (number.integer > 0) - (number.integer < 0)
                                             : (number.real > 0) - (number.real < 0);
    return Value::of_integer(sign, Type::INTEGER);
}

Value function_sin(const Value& angle) {
    return apply(kernel_sin, angle);
}
Value function_cos(const Value& angle) {
    return apply(kernel_cos, angle);
}
Value function_tan(const Value& angle) {
    return apply(kernel_tan, angle);
}
Value function_atn(const Value& tangent) {
    return apply(kernel_atan, tangent);
}
Value function_exp(const Value& x) {
    return apply(kernel_exp, x);
}

Value function_log(const Value& argument) {
    const double x = to_double(argument);
    if (error_pending()) return Value::nothing();
    return x <= 0 ? fail(message::illegal_function_call) : finite(kernel_log(x));
}

Value function_sqr(const Value& argument) {
    const double x = to_double(argument);
    if (error_pending()) return Value::nothing();
    return x < 0 ? fail(message::illegal_function_call) : finite(kernel_sqrt(x));
}

Value function_cint(const Value& number) {
    return Value::of_integer(to_integer(number));
}

Value function_csng(const Value& number) {
    const double single = to_single(to_double(number));
    if (error_pending()) return Value::nothing();
    return __builtin_isfinite(single) ? Value::of_real(single, Type::SINGLE) : fail(message::overflow);
}

Value function_cdbl(const Value& number) {
    return Value::of_real(to_double(number));
}

Value function_rnd_bare() {
    return next_random();
}
Value function_rnd(const Value& number) {
    return random_for(number);
}

}  // namespace korvane
