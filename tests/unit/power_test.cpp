#include "values/power.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "raised_error.h"

namespace korvane {
namespace {

using test::take_error;

constexpr double infinity = std::numeric_limits<double>::infinity();

void expect_power(double base, double exponent, double expected) {
    EXPECT_EQ(power(base, exponent), expected) << base << " ^ " << exponent;
    EXPECT_EQ(take_error(), "") << base << " ^ " << exponent;
}

void expect_error(double base, double exponent, const char* message) {
    EXPECT_EQ(power(base, exponent), 0) << base << " ^ " << exponent;
    EXPECT_EQ(take_error(), message) << base << " ^ " << exponent;
}

TEST(PowerTest, ExponentZeroGivesOne) {
    for (const double base : {0.0, -0.0, 5.0, -5.0, infinity, std::numeric_limits<double>::quiet_NaN()})
        expect_power(base, 0, 1);
}

TEST(PowerTest, BaseZero) {
    expect_power(0, 2, 0);
    expect_power(0, 0.5, 0);
    expect_power(0, 1e300, 0);
    expect_error(0, -1, "Division by zero");
    expect_error(0, -0.5, "Division by zero");
}

TEST(PowerTest, IntegralExponentsAreProductsOfSquares) {
    expect_power(2, 10, 1024);
    expect_power(-8, 3, -512);
    expect_power(-2, 2, 4);
    expect_power(2, -1, 0.5);
    expect_power(10, 15, 1e15);
    expect_power(2, 1023, 0x1p1023);
    // 7 = 1 + 2 + 4: x * x^2 * x^4 in this order.
    const double x = 1.1;
    expect_power(x, 7, (x * (x * x)) * ((x * x) * (x * x)));
    expect_power(x, -7, 1 / ((x * (x * x)) * ((x * x) * (x * x))));
}

TEST(PowerTest, TheLimitOfRepeatedSquaringIs65536) {
    double square = 1 + 0x1p-20;
    for (int i = 0; i < 16; i++)
        square *= square;
    expect_power(1 + 0x1p-20, 65536, square);
    expect_power(1 + 0x1p-20, -65536, 1 / square);
    expect_power(-1, 65535, -1);
    expect_power(-1, 65536, 1);
    expect_power(-1, -65536, 1);
    expect_error(-1, 65537, "Illegal function call");
    expect_error(-1, -65537, "Illegal function call");
    expect_power(1, 65537, 1);
}

TEST(PowerTest, NegativeBasesNeedIntegralExponents) {
    expect_error(-8, 1.0 / 3, "Illegal function call");
    expect_error(-8, infinity, "Illegal function call");
}

TEST(PowerTest, OtherExponents) {
    expect_power(4, 0.5, 2);
    expect_power(8, 1.0 / 3, 2);
    expect_power(2, 0.5, std::sqrt(2.0));
    expect_power(1e-300, 65536.5, 0);
}

TEST(PowerTest, InfiniteResultsOverflow) {
    expect_error(10, 309, "Overflow");
    expect_error(2, 1024, "Overflow");
    expect_error(-10, 309, "Overflow");
    expect_error(10, 308.5, "Overflow");
    expect_error(1e-200, -2, "Overflow");
    expect_error(infinity, 2, "Overflow");
    expect_error(infinity, 0.5, "Overflow");
    expect_error(std::numeric_limits<double>::quiet_NaN(), 2, "Overflow");
    expect_error(2, std::numeric_limits<double>::quiet_NaN(), "Overflow");
}

// The product overflows before its reciprocal is taken.
TEST(PowerTest, LargeNegativeExponentsGiveZero) {
    expect_power(10, -400, 0);
    expect_power(infinity, -0.5, 0);
}

}  // namespace
}  // namespace korvane
