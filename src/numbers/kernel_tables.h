// Constants of the numeric kernels. Written by tools/make_kernel_tables.py; do not edit.
#pragma once

#include <array>
#include <cstdint>

namespace korvane {

// pi/2 as the sum of two binary64 numbers.
constexpr double half_pi_high = 0x1.921fb54442d18p+0;
constexpr double half_pi_low = 0x1.1a62633145c07p-54;

// pi/2 once more: multiples of 2^-35 and 2^-71, whose products with 17-bit integers are exact, and the rest.
constexpr double half_pi_first = 0x1.921fb54440000p+0;
constexpr double half_pi_second = 0x1.68c234c500000p-39;
constexpr double half_pi_rest = -0x1.cceba3f91f197p-74;

// 2/pi.
constexpr double two_over_pi = 0x1.45f306dc9c883p-1;

// ln 2: a multiple of 2^-42, whose products with binary exponents are exact, and the rest.
constexpr double ln2_high = 0x1.62e42fefa3800p-1;
constexpr double ln2_low = 0x1.ef35793c76730p-45;

// (ln 2)/128: a multiple of 2^-42, whose products with 18-bit integers are exact, and the rest.
constexpr double exponential_step_high = 0x1.62e42fefc0000p-8;
constexpr double exponential_step_low = -0x1.c610ca86c3899p-44;

// 128/(ln 2).
constexpr double exponential_steps_per_unit = 0x1.71547652b82fep+7;

// A number as the unevaluated sum of two binary64 numbers.
struct PairRow {
    double high;
    double low;
};

// A node: reciprocal is about 1/c in 16 bits, high + low its negated logarithm (about log c), high a
// multiple of 2^-42. Near c, log x is high + low plus log(x * reciprocal).
struct LogarithmRow {
    double reciprocal;
    double high;
    double low;
};

// Sine and cosine of one angle, each as the sum of two binary64 numbers.
struct SineRow {
    double sine_high;
    double sine_low;
    double cosine_high;
    double cosine_low;
};

// The binary digits of 2/pi after the point, highest word first, behind one word of zeros.
extern const std::array<std::uint64_t, 20> two_over_pi_bits;

// 2^(i/128) for i from 0 to 127.
extern const std::array<PairRow, 128> exponential_rows;

// Nodes 1 + i/128 for i from 0 to 128, halved from i = 53 on, so that they lie around 1.
extern const std::array<LogarithmRow, 129> logarithm_rows;

// Angles i/128 for i from 16 to 101, in order.
extern const std::array<SineRow, 86> sine_rows;

// atan(i/128) for i from 16 to 128, in order.
extern const std::array<PairRow, 113> arctangent_rows;

}  // namespace korvane
