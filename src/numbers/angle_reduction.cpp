#include "numbers/angle_reduction.h"

#include <bit>

#include "numbers/kernel_tables.h"

namespace korvane {
namespace {

// A fixed-point number below 4: two integer bits and 190 fraction bits, the highest word first.
struct Turns {
    std::uint64_t high;
    std::uint64_t middle;
    std::uint64_t low;
};

// Angle * 2/pi modulo 4 for an angle of mantissa * 2^exponent. By the method of Payne and Hanek only those
// bits of 2/pi take part whose products can reach the result: multiples of 4 above it and what lies below it
// are left out.
Turns quarter_turns(std::uint64_t mantissa, std::int32_t exponent) {
    // The window of 192 bits begins at the bit of 2/pi with the weight 2^(1 - exponent); the table's first
    // word is 0, so that windows of small angles may begin before the point.
    const auto start = static_cast<std::uint32_t>(exponent - 2 + 64);
    const std::uint64_t* words = &two_over_pi_bits[start / 64];
    const std::uint32_t shift = start % 64;
    const auto window = [&](int i) {
        return shift == 0 ? words[i] : words[i] << shift | words[i + 1] >> (64 - shift);
    };
    const auto low = static_cast<unsigned __int128>(window(2)) * mantissa;
    const auto middle = static_cast<unsigned __int128>(window(1)) * mantissa + (low >> 64);
    const std::uint64_t high = window(0) * mantissa + static_cast<std::uint64_t>(middle >> 64);
    return {high, static_cast<std::uint64_t>(middle), static_cast<std::uint64_t>(low)};
}

// 2^exponent for exponents of normal numbers.
double power_of_two(std::int32_t exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// For any angle.
[[gnu::cold]] ReducedAngle reduce_exactly(double angle) {
    const auto bits = std::bit_cast<std::uint64_t>(angle);
    const std::uint64_t mantissa = (bits & 0xF'FFFF'FFFF'FFFF) | std::uint64_t{1} << 52;
    const auto exponent = static_cast<std::int32_t>(bits >> 52 & 0x7FF) - 1075;
    Turns turns = quarter_turns(mantissa, exponent);

    // The nearest quarter turn, and the distance to it as a magnitude with 192 fraction bits.
    std::uint32_t quadrant = static_cast<std::uint32_t>(turns.high >> 62) + (turns.high >> 61 & 1);
    turns.high = turns.high << 2 | turns.middle >> 62;
    turns.middle = turns.middle << 2 | turns.low >> 62;
    turns.low <<= 2;
    const bool below = turns.high >> 63 != 0;
    if (below) {
        turns.low = ~turns.low + 1;
        turns.middle = ~turns.middle + (turns.low == 0 ? 1 : 0);
        turns.high = ~turns.high + (turns.low == 0 && turns.middle == 0 ? 1 : 0);
    }

    // Its leading 106 bits as two binary64 numbers. At least 62 leading bits of an angle next to a multiple
    // of pi/2 are zeros, hardly ever a whole word.
    std::int32_t scale = 0;
    if (turns.high == 0) {
        turns = {turns.middle, turns.low, 0};
        scale = -64;
    }
    const auto zeros = static_cast<std::uint32_t>(std::countl_zero(turns.high));
    if (zeros != 0) {
        turns.high = turns.high << zeros | turns.middle >> (64 - zeros);
        turns.middle = turns.middle << zeros | turns.low >> (64 - zeros);
    }
    scale -= static_cast<std::int32_t>(zeros);
    const double unit = power_of_two(scale - 53);
    const double high = static_cast<double>(static_cast<std::int64_t>(turns.high >> 11)) * unit;
    const std::uint64_t rest = turns.high << 53 | turns.middle >> 11;
    const double low = static_cast<double>(static_cast<std::int64_t>(rest >> 1)) * unit * 0x1p-63;

    // Times pi/2.
    const DoubleDouble product = two_product(high, half_pi_high);
    const double correction = product.low + (high * half_pi_low + low * half_pi_high);
    const DoubleDouble sum = fast_two_sum(product.high, correction);
    const bool negative = below != (bits >> 63 != 0);
    if (bits >> 63 != 0) quadrant = 0u - quadrant;
    return {negative ? DoubleDouble{-sum.high, -sum.low} : sum, quadrant & 3};
}

}  // namespace

ReducedAngle reduce_angle(double angle) {
    constexpr double most = 0x1p17;                 // quarter turns are 17-bit integers up to here
    constexpr double least_rest = 0x1p-10;          // what follows is good to 2^-106
    constexpr double round_to_integral = 0x1.8p52;  // adding it leaves no bits for a fraction
    if (!(__builtin_fabs(angle) <= most)) return reduce_exactly(angle);
    const double turns = (angle * two_over_pi + round_to_integral) - round_to_integral;
    // The first difference is exact, for the two numbers nearly cancel.
    const DoubleDouble rest = two_sum(angle - turns * half_pi_first, -(turns * half_pi_second));
    if (__builtin_fabs(rest.high) < least_rest) return reduce_exactly(angle);
    return {{rest.high, rest.low - turns * half_pi_rest},
            static_cast<std::uint32_t>(static_cast<std::int32_t>(turns)) & 3};
}

}  // namespace korvane
