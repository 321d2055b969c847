// The circular functions and their inverse. Where a result is S + small, S comes from a table to 106 bits and
// the small part from a polynomial, so that only its rounding and the last one count.
#include <bit>
#include <cstdint>

#include "numbers/angle_reduction.h"
#include "numbers/double_double.h"
#include "numbers/kernel_tables.h"
#include "numbers/kernels.h"

namespace korvane {
namespace {

constexpr double table_start = 0.125;  // below, polynomials alone
constexpr double table_steps = 128;    // rows per unit
constexpr std::size_t first_row = 16;  // table_start * table_steps
constexpr double quarter_pi = 0.7853981633974483;
constexpr double two_to_60 = 0x1p60;
constexpr double infinity = __builtin_huge_val();

double absolute(double x) {
    return __builtin_fabs(x);
}

// sin h - h for |h| <= 1/8, by the Taylor series.
double sine_tail(double h) {
    const double z = h * h;
    return h * z *
           (-1.0 / 6 + z * (1.0 / 120 + z * (-1.0 / 5040 + z * (1.0 / 362880 + z * (-1.0 / 39916800)))));
}

// cos h - 1 for |h| <= 1/8.
double cosine_tail(double h) {
    const double z = h * h;
    return z * (-0.5 + z * (1.0 / 24 + z * (-1.0 / 720 + z * (1.0 / 40320 + z * (-1.0 / 3628800)))));
}

// A magnitude of at most 2^50 in table steps, rounded to an integral number.
double nearest_step(double magnitude) {
    constexpr double round_to_integral = 0x1.8p52;  // adding it leaves no bits for a fraction
    return (magnitude * table_steps + round_to_integral) - round_to_integral;
}

std::size_t row_of(double step) {
    return static_cast<std::size_t>(static_cast<std::int64_t>(step)) - first_row;
}

// The table row nearest to a magnitude of at least table_start, and the distance from it.
struct Neighbour {
    const SineRow& row;
    double sine;         // sin of the distance
    double cosine_less;  // cos of the distance, less 1
};

Neighbour find_row(double magnitude, double low) {
    const double step = nearest_step(magnitude);
    const double distance = (magnitude - step / table_steps) + low;
    const double z = distance * distance;
    return {sine_rows[row_of(step)], distance + distance * z * (-1.0 / 6 + z * (1.0 / 120)),
            z * (-0.5 + z * (1.0 / 24 - z * (1.0 / 720)))};
}

// Sine of an angle of magnitude at most pi/4, as a sum whose low part is below 1/16 of the high one.
DoubleDouble sine_of(DoubleDouble angle) {
    const double magnitude = absolute(angle.high);
    if (magnitude < table_start) {
        const double z = angle.high * angle.high;
        return {angle.high, sine_tail(angle.high) + (angle.low - 0.5 * z * angle.low)};
    }
    const bool negative = angle.high < 0;
    const Neighbour near = find_row(magnitude, negative ? -angle.low : angle.low);
    const double low =
        near.row.cosine_high * near.sine + (near.row.sine_high * near.cosine_less + near.row.sine_low);
    return negative ? DoubleDouble{-near.row.sine_high, -low} : DoubleDouble{near.row.sine_high, low};
}

// Cosine of an angle of magnitude at most pi/4, likewise.
DoubleDouble cosine_of(DoubleDouble angle) {
    const double magnitude = absolute(angle.high);
    if (magnitude < table_start) return {1, cosine_tail(angle.high) - angle.high * angle.low};
    const Neighbour near = find_row(magnitude, angle.high < 0 ? -angle.low : angle.low);
    return {near.row.cosine_high, near.row.sine_high * -near.sine +
                                      (near.row.cosine_high * near.cosine_less + near.row.cosine_low)};
}

ReducedAngle reduce(double angle) {
    if (absolute(angle) <= quarter_pi) return {{angle, 0}, 0};
    return reduce_angle(angle);
}

bool is_finite(double x) {
    return absolute(x) < infinity;
}

// The upper 26 bits of a number.
double leading_bits(double number) {
    constexpr std::uint64_t others = (std::uint64_t{1} << 27) - 1;
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(number) & ~others);
}

// Quotient of two numbers of more than binary64 precision: its leading bits, whose products with the halves
// of the divisor are exact, and from what these leave the others. There is one division to wait for.
double divide(DoubleDouble dividend, DoubleDouble divisor) {
    const DoubleDouble a = fast_two_sum(dividend.high, dividend.low);
    const DoubleDouble b = fast_two_sum(divisor.high, divisor.low);
    const double reciprocal = 1 / b.high;
    const DoubleDouble halves = split(b.high);
    const double leading = leading_bits(a.high * reciprocal);
    const double rest = ((a.high - leading * halves.high) - leading * halves.low) + (a.low - leading * b.low);
    return leading + rest * reciprocal;
}

// atan t - t for |t| <= 1/8.
double arctangent_tail(double t) {
    const double z = t * t;
    const double far = 1.0 / 11 + z * (-1.0 / 13 + z * (1.0 / 15 + z * (-1.0 / 17 + z * (1.0 / 19))));
    return t * z * (-1.0 / 3 + z * (1.0 / 5 + z * (-1.0 / 7 + z * (1.0 / 9 - z * far))));
}

// atan t for |t| <= 1/250.
double small_arctangent(double t) {
    const double z = t * t;
    return t + t * z * (-1.0 / 3 + z * (1.0 / 5 + z * (-1.0 / 7)));
}

// Arctangent of a number from 0 to 1, given as high + low, as an unevaluated sum.
DoubleDouble arctangent_of(DoubleDouble x) {
    if (x.high < table_start) return {x.high, arctangent_tail(x.high) + x.low};
    const double step = nearest_step(x.high);
    const double node = step / table_steps;
    // atan x = atan c + atan((x - c) / (1 + x c))
    const double t = ((x.high - node) + x.low) / (1 + x.high * node);
    const PairRow& row = arctangent_rows[row_of(step)];
    return {row.high, small_arctangent(t) + row.low};
}

double arctangent_of_magnitude(double x) {
    if (x <= 1) {
        const DoubleDouble result = arctangent_of({x, 0});
        return result.high + result.low;
    }
    if (x > two_to_60) return half_pi_high + half_pi_low;
    // atan x = pi/2 - atan(1/x), the reciprocal with its rounding error.
    const double reciprocal = 1 / x;
    const DoubleDouble product = two_product(reciprocal, x);
    const double error = ((1 - product.high) - product.low) * reciprocal;
    const DoubleDouble rest = arctangent_of({reciprocal, error});
    const DoubleDouble difference = fast_two_sum(half_pi_high, -rest.high);
    return difference.high + (difference.low + (half_pi_low - rest.low));
}

}  // namespace

double kernel_sin(double angle) {
    if (!is_finite(angle)) return angle - angle;
    const ReducedAngle reduced = reduce(angle);
    const DoubleDouble result = (reduced.quadrant & 1) == 0 ? sine_of(reduced.rest) : cosine_of(reduced.rest);
    const double sum = result.high + result.low;
    return (reduced.quadrant & 2) == 0 ? sum : -sum;
}

double kernel_cos(double angle) {
    if (!is_finite(angle)) return angle - angle;
    const ReducedAngle reduced = reduce(angle);
    const DoubleDouble result = (reduced.quadrant & 1) == 0 ? cosine_of(reduced.rest) : sine_of(reduced.rest);
    const double sum = result.high + result.low;
    return ((reduced.quadrant + 1) & 2) == 0 ? sum : -sum;
}

double kernel_tan(double angle) {
    if (!is_finite(angle)) return angle - angle;
    const ReducedAngle reduced = reduce(angle);
    const DoubleDouble sine = sine_of(reduced.rest);
    const DoubleDouble cosine = cosine_of(reduced.rest);
    return (reduced.quadrant & 1) == 0 ? divide(sine, cosine) : -divide(cosine, sine);
}

double kernel_atan(double tangent) {
    if (tangent != tangent) return tangent;
    const double magnitude = arctangent_of_magnitude(absolute(tangent));
    return tangent < 0 ? -magnitude : magnitude;
}

}  // namespace korvane
