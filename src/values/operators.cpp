#include "values/operators.h"

#include <algorithm>

#include "platform/memory.h"
#include "platform/processor.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "values/convert.h"
#include "values/functions.h"
#include "values/power.h"
#include "values/promotion.h"

namespace korvane {
namespace {

constexpr std::int64_t most_negative = INT64_MIN;

// A floating result in the given type; infinite and NaN results are errors.
Value floating_result(double number, Type type) {
    if (type == Type::SINGLE) number = to_single(number);
    if (!__builtin_isfinite(number)) return fail(message::overflow);
    return Value::of_real(number, type);
}

Value concatenate(const Value& left, const Value& right) {
    const std::uint64_t length = std::uint64_t{left.length} + right.length;
    if (length > UINT32_MAX) return fail(message::out_of_string_space);
    std::uint8_t* bytes = allocate_string(length);
    if (error_pending()) return Value::nothing();
    copy_bytes(bytes, left.bytes, left.length);
    copy_bytes(bytes + left.length, right.bytes, right.length);
    return Value::of_string(bytes, static_cast<std::uint32_t>(length));
}

// + - * of two integers, exact in 64 bits whatever the operands' widths. False when the result needs more.
bool exact_integer(std::uint8_t operation, std::int64_t left, std::int64_t right, std::int64_t& result) {
    switch (operation) {
        case '+':
            return !__builtin_add_overflow(left, right, &result);
        case '-':
            return !__builtin_sub_overflow(left, right, &result);
        default:
            return !multiply_overflows(left, right, result);
    }
}

double floating(std::uint8_t operation, double left, double right) {
    switch (operation) {
        case '+':
            return left + right;
        case '-':
            return left - right;
        default:
            return left * right;
    }
}

Value add_subtract_multiply(std::uint8_t operation, const Value& left, const Value& right) {
    const Type type = sum_type(left.type, right.type);
    if (is_integer(type)) {
        std::int64_t result;
        if (exact_integer(operation, left.integer, right.integer, result)) return Value::of_integer(result);
        return floating_result(
            floating(operation, static_cast<double>(left.integer), static_cast<double>(right.integer)),
            Type::DOUBLE);
    }
    return floating_result(floating(operation, to_double(left), to_double(right)), type);
}

Value divide(const Value& left, const Value& right) {
    const double divisor = to_double(right);
    if (divisor == 0.0) return fail(message::division_by_zero);
    return floating_result(to_double(left) / divisor, quotient_type(left.type, right.type));
}

// \ and MOD. The quotient truncates toward zero; the remainder has the sign of the dividend.
Value divide_integers(std::uint8_t operation, const Value& left, const Value& right) {
    const std::int64_t dividend = to_integer(left);
    if (error_pending()) return Value::nothing();
    const std::int64_t divisor = to_integer(right);
    if (error_pending()) return Value::nothing();
    if (divisor == 0) return fail(message::division_by_zero);
    if (dividend == most_negative && divisor == -1) return fail(message::overflow);
    return Value::of_integer(operation == KW_MOD ? dividend % divisor : dividend / divisor);
}

template <typename Number>
int order_of(Number left, Number right) {
    return static_cast<int>(left > right) - static_cast<int>(left < right);
}

int compare_strings(const Value& left, const Value& right) {
    const int difference = compare_bytes(left.bytes, right.bytes, std::min(left.length, right.length));
    if (difference != 0) return difference < 0 ? -1 : 1;
    return order_of(left.length, right.length);
}

// Exact comparison of an integer too large to be converted to a double without rounding.
int compare_exactly(std::int64_t integer, double real) {
    constexpr double two_to_63 = 9223372036854775808.0;
    if (real >= two_to_63) return -1;
    if (real < -two_to_63) return 1;
    const auto whole = static_cast<std::int64_t>(real);
    if (integer != whole) return order_of(integer, whole);
    const double fraction = real - static_cast<double>(whole);
    return order_of(0.0, fraction);
}

// An INTEGER or LONG can be as large as an INT64 when a suffix types a hexadecimal literal, and is converted
// to a double all the same.
int compare_mixed(const Value& integer, double real) {
    constexpr std::int64_t two_to_53 = 9007199254740992;
    const bool exact = integer.integer >= -two_to_53 && integer.integer <= two_to_53;
    if (integer.type == Type::INT64 && !exact) return compare_exactly(integer.integer, real);
    return order_of(static_cast<double>(integer.integer), real);
}

bool is_nan(const Value& value) {
    return is_floating(value.type) && __builtin_isnan(value.real);
}

int compare_numbers(const Value& left, const Value& right) {
    if (is_integer(left.type) && is_integer(right.type)) return order_of(left.integer, right.integer);
    if (is_nan(left) || is_nan(right)) {
        raise(message::illegal_function_call);
        return 0;
    }
    if (is_integer(left.type)) return compare_mixed(left, right.real);
    if (is_integer(right.type)) return -compare_mixed(right, left.real);
    return order_of(left.real, right.real);
}

}  // namespace

Value arithmetic(std::uint8_t operation, const Value& left, const Value& right) {
    const bool string_left = left.type == Type::STRING;
    const bool string_right = right.type == Type::STRING;
    if (string_left || string_right) {
        if (operation == '+' && string_left && string_right) return concatenate(left, right);
        return fail(message::type_mismatch);
    }
    switch (operation) {
        case '+':
        case '-':
        case '*':
            return add_subtract_multiply(operation, left, right);
        case '/':
            return divide(left, right);
        default:
            return divide_integers(operation, left, right);
    }
}

Value logical(std::uint8_t operation, const Value& left, const Value& right) {
    const std::int64_t a = to_integer(left);
    if (error_pending()) return Value::nothing();
    const std::int64_t b = to_integer(right);
    if (error_pending()) return Value::nothing();
    switch (operation) {
        case KW_AND:
            return Value::of_integer(a & b);
        case KW_OR:
            return Value::of_integer(a | b);
        case KW_XOR:
            return Value::of_integer(a ^ b);
        case KW_EQV:
            return Value::of_integer(~(a ^ b));
        default:
            return Value::of_integer(~a | b);  // IMP
    }
}

Value power(const Value& base_value, const Value& exponent_value) {
    const double base = to_double(base_value);
    const double exponent = to_double(exponent_value);
    if (error_pending()) return Value::nothing();
    return Value::of_real(power(base, exponent));
}

Value negate(const Value& operand) {
    if (operand.type == Type::STRING) return fail(message::type_mismatch);
    if (is_floating(operand.type)) return Value::of_real(-operand.real, operand.type);
    if (operand.integer == most_negative) return fail(message::overflow);
    return Value::of_integer(-operand.integer, operand.type);
}

int compare(const Value& left, const Value& right) {
    const bool string_left = left.type == Type::STRING;
    if (string_left != (right.type == Type::STRING)) {
        raise(message::type_mismatch);
        return 0;
    }
    return string_left ? compare_strings(left, right) : compare_numbers(left, right);
}

}  // namespace korvane
