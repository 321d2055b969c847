#include "values/convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "raised_error.h"

namespace korvane {
namespace {

using test::take_error;

constexpr double infinity = std::numeric_limits<double>::infinity();
const Value text = Value::of_string(nullptr, 0);

TEST(ConvertTest, HalvesRoundAwayFromZero) {
    EXPECT_EQ(round_to_integer(2.5), 3);
    EXPECT_EQ(round_to_integer(-2.5), -3);
    EXPECT_EQ(round_to_integer(3.5), 4);
    EXPECT_EQ(round_to_integer(0.5), 1);
    EXPECT_EQ(round_to_integer(-0.5), -1);
    EXPECT_EQ(round_to_integer(0.49999), 0);
    EXPECT_EQ(round_to_integer(std::nextafter(0.5, 0)), 0);
    EXPECT_EQ(round_to_integer(-0.49999), 0);
    EXPECT_EQ(round_to_integer(4503599627370495.5), 4503599627370496);
    EXPECT_EQ(round_to_integer(-4503599627370495.5), -4503599627370496);
    EXPECT_EQ(take_error(), "");
}

TEST(ConvertTest, TheInt64RangeIsTheLimit) {
    EXPECT_EQ(round_to_integer(-9223372036854775808.0), INT64_MIN);
    EXPECT_EQ(round_to_integer(std::nextafter(9223372036854775808.0, 0)), 9223372036854774784);
    EXPECT_EQ(take_error(), "");
    for (const double number : {9223372036854775808.0, std::nextafter(-9223372036854775808.0, -infinity),
                                1e300, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(round_to_integer(number), 0);
        EXPECT_EQ(take_error(), "Overflow");
    }
}

TEST(ConvertTest, ValuesToIntegers) {
    EXPECT_EQ(to_integer(Value::of_integer(INT64_MIN)), INT64_MIN);
    EXPECT_EQ(to_integer(Value::of_integer(40000, Type::INTEGER)), 40000);
    EXPECT_EQ(to_integer(Value::of_real(-7.5)), -8);
    EXPECT_EQ(to_integer(Value::of_real(7.25, Type::SINGLE)), 7);
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(to_integer(text), 0);
    EXPECT_EQ(take_error(), "Type mismatch");
}

TEST(ConvertTest, ValuesToDoubles) {
    EXPECT_EQ(to_double(Value::of_integer(9007199254740993)), 9007199254740992.0);
    EXPECT_EQ(to_double(Value::of_real(0.1)), 0.1);
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(to_double(text), 0);
    EXPECT_EQ(take_error(), "Type mismatch");
}

TEST(ConvertTest, RoundingToSingle) {
    EXPECT_EQ(to_single(0.1), static_cast<double>(0.1f));
    EXPECT_EQ(to_single(16777217), 16777216);
    EXPECT_EQ(to_single(1e39), infinity);
    EXPECT_EQ(to_single(-1e39), -infinity);
}

TEST(ConvertTest, TypeNames) {
    EXPECT_STREQ(type_name(Type::INTEGER), "INTEGER");
    EXPECT_STREQ(type_name(Type::LONG), "LONG");
    EXPECT_STREQ(type_name(Type::INT64), "INT64");
    EXPECT_STREQ(type_name(Type::SINGLE), "SINGLE");
    EXPECT_STREQ(type_name(Type::DOUBLE), "DOUBLE");
    EXPECT_STREQ(type_name(Type::STRING), "STRING");
    EXPECT_STREQ(type_name(Type::NONE), "");
    EXPECT_STREQ(type_name(static_cast<Type>(7)), "");
    EXPECT_STREQ(type_name(static_cast<Type>(255)), "");
}

}  // namespace
}  // namespace korvane
