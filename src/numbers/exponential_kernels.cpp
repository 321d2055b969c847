// Exponential, logarithm and power.
#include <bit>
#include <cstdint>

#include "numbers/double_double.h"
#include "numbers/kernel_tables.h"
#include "numbers/kernels.h"

namespace korvane {
namespace {

constexpr double infinity = __builtin_huge_val();
// EXP's range is part of the language and lies a little inside that of binary64.
constexpr double largest_exponent = 709.78;
constexpr double lowest_exponent = -745;

// Beyond these the exponential of any number is an infinity or zero, to the last bit.
constexpr double certain_overflow = 710;
constexpr double certain_underflow = -746;

// 2^exponent for exponents of normal numbers.
double power_of_two(std::int64_t exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// number * 2^exponent, also where the result is subnormal or the power itself out of range.
double scale(double number, std::int64_t exponent) {
    if (exponent < -1022) return number * power_of_two(exponent + 1000) * 0x1p-1000;
    if (exponent > 1023) return number * power_of_two(exponent - 1000) * 0x1p1000;
    return number * power_of_two(exponent);
}

// e^(x.high + x.low), x.high between the certain limits: 2^(steps/128) from the table times e^rest of a rest
// of at most (ln 2)/256.
double exponential(DoubleDouble x) {
    constexpr double round_to_integral = 0x1.8p52;  // adding it leaves no bits for a fraction
    const double steps = (x.high * exponential_steps_per_unit + round_to_integral) - round_to_integral;
    const double rest = (x.high - steps * exponential_step_high) + (x.low - steps * exponential_step_low);
    const auto index = static_cast<std::int64_t>(steps);
    const PairRow& row = exponential_rows[static_cast<std::size_t>(index & 127)];
    const double z = rest * rest;
    const double less_one = rest + (z * (0.5 + rest * (1.0 / 6)) + z * z * (1.0 / 24 + rest * (1.0 / 120)));
    return scale(row.high + (row.low + row.high * less_one), index >> 7);
}

// ln x of a positive finite number as an unevaluated sum, good to about 2^-68 of its size: x = 2^exponent * m
// with m around 1, ln m = ln c + ln(1 + r) for the node c of the table next to m.
DoubleDouble logarithm(double x) {
    auto bits = std::bit_cast<std::uint64_t>(x);
    std::int64_t exponent = 0;
    if (bits >> 52 == 0) {  // subnormal
        bits = std::bit_cast<std::uint64_t>(x * 0x1p54);
        exponent = -54;
    }
    constexpr std::uint64_t mantissa_mask = (std::uint64_t{1} << 52) - 1;
    constexpr std::uint64_t low_mask = (std::uint64_t{1} << 21) - 1;
    constexpr std::size_t first_halved = 53;  // the table's nodes lie below the square root of 2
    const std::uint64_t mantissa = bits & mantissa_mask;
    const auto index = static_cast<std::size_t>((mantissa + (std::uint64_t{1} << 44)) >> 45);
    const bool halved = index >= first_halved;
    exponent += static_cast<std::int64_t>(bits >> 52) - 1023 + (halved ? 1 : 0);
    const std::uint64_t field = halved ? std::uint64_t{1022} << 52 : std::uint64_t{1023} << 52;
    const double m = std::bit_cast<double>(mantissa | field);

    // r = m * reciprocal - 1 exactly: the reciprocal has 16 bits, the upper part of m 32.
    const LogarithmRow& row = logarithm_rows[index];
    const double m_high = std::bit_cast<double>((mantissa & ~low_mask) | field);
    const DoubleDouble r = two_sum(m_high * row.reciprocal - 1, (m - m_high) * row.reciprocal);

    // ln(1 + r) = r - r^2/2 + r^3 (1/3 - ...), the first two terms to twice the precision.
    const DoubleDouble square = two_product(r.high, r.high);
    const double z = square.high;
    const double near = (1.0 / 3 - r.high * (1.0 / 4)) + z * (1.0 / 5 - r.high * (1.0 / 6));
    const double far = (1.0 / 7 - r.high * (1.0 / 8)) + z * (1.0 / 9 - r.high * (1.0 / 10));
    const double tail = r.high * z * (near + z * z * far);

    const auto count = static_cast<double>(exponent);
    const double whole = count * ln2_high + row.high;  // exact
    const DoubleDouble first = fast_two_sum(whole, r.high);
    const DoubleDouble second = fast_two_sum(first.high, -0.5 * square.high);
    const double low = first.low + second.low + (r.low - r.high * r.low - 0.5 * square.low) +
                       (count * ln2_low + row.low) + tail;
    return fast_two_sum(second.high, low);
}

}  // namespace

double kernel_exp(double x) {
    if (x != x) return x;
    if (x > largest_exponent) return infinity;
    if (x < lowest_exponent) return 0;
    return exponential({x, 0});
}

double kernel_log(double x) {
    if (!(x > 0)) return x == 0 ? -infinity : infinity - infinity;
    if (x == infinity) return x;
    const DoubleDouble result = logarithm(x);
    return result.high + result.low;
}

double kernel_pow(double base, double exponent) {
    if (base != base || exponent != exponent) return base + exponent;
    if (!(base < infinity)) return exponent > 0 ? infinity : 0;
    const DoubleDouble log = logarithm(base);
    const double product = log.high * exponent;
    if (product != product) return product;
    if (log.high == 0 || exponent == 0) return 1;
    if (product > certain_overflow) return infinity;
    if (product < certain_underflow) return 0;
    // The exponent is below 2^63 here: the logarithm of a number other than 1 is at least 2^-53.
    const DoubleDouble x = two_product(log.high, exponent);
    return exponential({x.high, x.low + log.low * exponent});
}

}  // namespace korvane
