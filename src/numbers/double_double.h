// Numbers as unevaluated sums of two binary64 numbers, for about 106 bits of precision. The classic
// error-free transformations of Dekker and Knuth; they rely on every operation being rounded to binary64 on
// its own.
#pragma once

namespace korvane {

struct DoubleDouble {
    double high;
    double low;
};

// a + b exactly, for |a| >= |b| or a = 0.
inline DoubleDouble fast_two_sum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

// a + b exactly.
inline DoubleDouble two_sum(double a, double b) {
    const double sum = a + b;
    const double b_part = sum - a;
    return {sum, (a - (sum - b_part)) + (b - b_part)};
}

// The upper 26 bits of a number and the rest, which has at most 26; for numbers below 2^995.
inline DoubleDouble split(double a) {
    constexpr double splitter = 134217729.0;  // 2^27 + 1
    const double scaled = splitter * a;
    const double high = scaled - (scaled - a);
    return {high, a - high};
}

// a * b exactly, as long as nothing overflows or underflows.
inline DoubleDouble two_product(double a, double b) {
    const double product = a * b;
    const DoubleDouble x = split(a);
    const DoubleDouble y = split(b);
    return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

}  // namespace korvane
