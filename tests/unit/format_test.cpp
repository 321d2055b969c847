// Number formatting: known forms, and random numbers against
// a plain re-implementation of the formatter's steps.
#include "numbers/format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "random_bits.h"
#include "values/convert.h"

namespace korvane {
namespace {

using test::RandomBits;

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string integer(std::int64_t value, Type type = Type::INT64) {
    return std::string(format_number(Value::of_integer(value, type)).view());
}
std::string single(double value) {
    return std::string(format_number(Value::of_real(to_single(value), Type::SINGLE)).view());
}
std::string real(double value) {
    return std::string(format_number(Value::of_real(value)).view());
}

std::string magnitude(double value, int digits, char letter) {
    std::vector<char> text(magnitude_size(digits));
    return {text.data(), format_magnitude(value, digits, letter, text)};
}

// The steps one by one, the digits by the C library: n is integral, so "%.0f" prints it exactly.
std::string expected_magnitude(double x, int d, char letter) {
    if (std::isnan(x)) return "NAN";
    if (std::isinf(x)) return "INF";
    if (x == 0) return "0";
    int e = 0;
    for (; x >= 10; e++)
        x = x / 10;
    for (; x < 1; e--)
        x = x * 10;
    double n = std::floor(x * std::stod("1e" + std::to_string(d - 1)) + 0.5);
    if (n >= std::stod("1e" + std::to_string(d))) {
        n = std::floor(n / 10);
        e++;
    }
    std::array<char, 400> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%0*.0f", d, n);
    std::string digits = buffer.data();
    while (digits.size() > 1 && digits.back() == '0')
        digits.pop_back();
    if (e < -4 || e > d - 1) {
        std::string text = digits.substr(0, 1);
        if (digits.size() > 1) text += "." + digits.substr(1);
        std::snprintf(buffer.data(), buffer.size(), "%c%c%02d", letter, e < 0 ? '-' : '+', std::abs(e));
        return text + buffer.data();
    }
    if (e < 0) return "." + std::string(static_cast<std::size_t>(-e - 1), '0') + digits;
    const auto whole = static_cast<std::size_t>(e) + 1;
    if (digits.size() <= whole) return digits + std::string(whole - digits.size(), '0');
    return digits.substr(0, whole) + "." + digits.substr(whole);
}

TEST(FormatTest, Integers) {
    EXPECT_EQ(integer(0), " 0 ");
    EXPECT_EQ(integer(7, Type::INTEGER), " 7 ");
    EXPECT_EQ(integer(-7, Type::LONG), "-7 ");
    EXPECT_EQ(integer(1234567890), " 1234567890 ");
    EXPECT_EQ(integer(INT64_MAX), " 9223372036854775807 ");
    EXPECT_EQ(integer(INT64_MIN), "-9223372036854775808 ");
}

TEST(FormatTest, Singles) {
    EXPECT_EQ(single(0), " 0 ");
    EXPECT_EQ(single(1.0 / 3), " .3333333 ");
    EXPECT_EQ(single(-0.25), "-.25 ");
    EXPECT_EQ(single(0.001), " .001 ");
    EXPECT_EQ(single(1234567), " 1234567 ");
    EXPECT_EQ(single(9999999), " 9999999 ");
    EXPECT_EQ(single(1e7), " 1E+07 ");
    EXPECT_EQ(single(1.5e10), " 1.5E+10 ");
    EXPECT_EQ(single(0.0001), " .0001 ");
    EXPECT_EQ(single(0.00001), " 1E-05 ");
    EXPECT_EQ(single(3.5), " 3.5 ");
    EXPECT_EQ(single(100), " 100 ");
    EXPECT_EQ(single(1.2345678), " 1.234568 ");
    EXPECT_EQ(single(3.4028235e38), " 3.402823E+38 ");
    EXPECT_EQ(single(1e39), " INF ");
    EXPECT_EQ(single(-1e39), "-INF ");
}

TEST(FormatTest, Doubles) {
    EXPECT_EQ(real(1.0 / 3), " .333333333333333 ");
    EXPECT_EQ(real(0.00001234), " 1.234D-05 ");
    EXPECT_EQ(real(999999999999999), " 999999999999999 ");
    EXPECT_EQ(real(1e15), " 1D+15 ");
    EXPECT_EQ(real(-1.5e100), "-1.5D+100 ");
    EXPECT_EQ(real(1e-5), " 1D-05 ");
    EXPECT_EQ(real(0.0001), " .0001 ");
    EXPECT_EQ(real(0.1), " .1 ");
    EXPECT_EQ(real(static_cast<double>(0.1f)), " .100000001490116 ");
    EXPECT_EQ(real(-0.0), " 0 ");
    EXPECT_EQ(real(infinity), " INF ");
    EXPECT_EQ(real(-infinity), "-INF ");
    EXPECT_EQ(real(std::numeric_limits<double>::quiet_NaN()), " NAN ");
}

TEST(FormatTest, ACarryOutOfTheDigitsRaisesTheExponent) {
    EXPECT_EQ(magnitude(9.9999996, 7, 'E'), "10");
    EXPECT_EQ(magnitude(0.99999996, 7, 'E'), "1");
    EXPECT_EQ(magnitude(9999999.6, 7, 'E'), "1E+07");
    EXPECT_EQ(magnitude(0.000099999996, 7, 'E'), ".0001");
    EXPECT_EQ(magnitude(9.6, 1, 'E'), "1E+01");
}

TEST(FormatTest, ExponentsHaveTwoOrThreeDigits) {
    EXPECT_EQ(magnitude(1e9, 7, 'E'), "1E+09");
    EXPECT_EQ(magnitude(1e99, 15, 'D'), "1D+99");
    EXPECT_EQ(magnitude(1e100, 15, 'D'), "1D+100");
    EXPECT_EQ(magnitude(1e-99, 7, 'E'), "1E-99");
    EXPECT_EQ(magnitude(1e-100, 7, 'E'), "1E-100");
}

// Each multiplication by ten rounds, and so the last digit is not that of a correctly rounded printer.
TEST(FormatTest, DigitsAreThoseOfTheStatedSteps) {
    EXPECT_EQ(magnitude(8e-20, 15, 'D'), "8.00000000000001D-20");
    EXPECT_EQ(magnitude(8e-20, 7, 'E'), "8E-20");
}

TEST(FormatTest, RandomNumbersFollowTheSteps) {
    RandomBits random(11);
    for (long i = 0; i < test::numeric_arguments(); i++) {
        double x = 0;
        switch (i % 5) {
            case 0:
                x = std::fabs(random.any());
                break;
            case 1:
                x = random.between(0, 1000);
                break;
            case 2:
                x = static_cast<double>(random.bits() % 10000000) / 100;
                break;
            case 3:
                x = std::ldexp(random.between(1, 2), random.below(100) - 50);
                break;
            default:
                x = static_cast<double>(random.bits() >> random.below(64));
        }
        ASSERT_EQ(magnitude(x, 15, 'D'), expected_magnitude(x, 15, 'D')) << x;
        const double narrow = to_single(x);
        ASSERT_EQ(magnitude(narrow, 7, 'E'), expected_magnitude(narrow, 7, 'E')) << x;
    }
}

// Of every size, and at both ends of the mantissas that lose three or four bits by a division.
TEST(FormatTest, LargeNumbersAreDividedStepByStep) {
    const auto check = [](const double x) {
        double quotient = x;
        int expected = 0;
        for (; quotient >= 10; expected++)
            quotient /= 10;
        double normalized = x;
        const int exponent = normalize(normalized);
        ASSERT_EQ(exponent, expected) << x;
        ASSERT_EQ(normalized, quotient) << x;
    };
    for (int exponent = 0; exponent <= 1023; exponent++)
        for (const double mantissa : {1.0, 1.25, 1.5625, 1.6, 2.0})
            for (const double x : {std::nextafter(mantissa, 0), mantissa, std::nextafter(mantissa, 3)})
                if (x >= 1 && x < 2) check(std::ldexp(x, exponent));
    RandomBits random(14);
    for (long i = 0; i < 10 * test::numeric_arguments(); i++)
        check(std::ldexp(random.between(1, 2), random.below(1024)));
}

TEST(FormatTest, EveryCountOfDigitsFollowsTheSteps) {
    RandomBits random(12);
    for (int digits = 1; digits <= 255; digits++) {
        for (int i = 0; i < 50; i++) {
            const double x = std::ldexp(random.between(1, 2), random.below(80) - 40);
            ASSERT_EQ(magnitude(x, digits, 'E'), expected_magnitude(x, digits, 'E')) << x << " " << digits;
        }
        ASSERT_EQ(magnitude(1, digits, 'E'), expected_magnitude(1, digits, 'E')) << digits;
        ASSERT_EQ(magnitude(infinity, digits, 'E'), "INF");
    }
}

TEST(FormatTest, EveryFormFitsItsText) {
    RandomBits random(13);
    std::size_t longest = 0;
    for (int i = 0; i < 100000; i++) {
        const NumberText text = format_number(Value::of_real(-std::fabs(random.any())));
        longest = std::max<std::size_t>(longest, text.size);
    }
    EXPECT_EQ(longest, 23u);
    EXPECT_EQ(real(-0.000123456789012345).size(), 21u);
}

TEST(FormatTest, SmallIntegersNeedNoNormalization) {
    for (int i = 0; i < 1000000; i++) {
        std::array<char, 32> text;
        const std::string as_double(text.data(), format_magnitude(i, 15, 'D', text));
        ASSERT_EQ(format_number(Value::of_real(i)).view(), ' ' + as_double + ' ');
        const std::string as_single(text.data(), format_magnitude(i, 7, 'E', text));
        ASSERT_EQ(format_number(Value::of_real(-i, Type::SINGLE)).view(),
                  (i == 0 ? ' ' : '-') + as_single + ' ');
    }
}

TEST(FormatTest, Unsigned) {
    EXPECT_EQ(format_unsigned(0).view(), "0");
    EXPECT_EQ(format_unsigned(10).view(), "10");
    EXPECT_EQ(format_unsigned(UINT64_MAX).view(), "18446744073709551615");
}

TEST(FormatTest, IntegralNumbersHaveAllTheirDigits) {
    RandomBits random(14);
    std::array<char, integral_size> text;
    std::vector<char> expected(400);
    for (int i = 0; i < 100000; i++) {
        const double number = std::floor(std::ldexp(random.between(1, 2), random.below(1024)));
        const std::size_t size = write_integral(number, text);
        std::snprintf(expected.data(), expected.size(), "%.0f", number);
        ASSERT_EQ(std::string(text.data(), size), expected.data());
    }
    EXPECT_EQ(write_integral(0, text), 1u);
    EXPECT_EQ(write_integral(std::numeric_limits<double>::max(), text), integral_size);
}

}  // namespace
}  // namespace korvane
