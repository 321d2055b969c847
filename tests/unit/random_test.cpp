#include "values/random.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "raised_error.h"

namespace korvane {
namespace {

using test::take_error;

class RandomTest : public testing::Test {
  protected:
    RandomTest() { reset_random(); }
};

void expect_single(const Value& value, double expected) {
    EXPECT_EQ(value.type, Type::SINGLE);
    EXPECT_EQ(value.real, expected);
}

TEST_F(RandomTest, StartsWithSeed327680AndLastResultZero) {
    EXPECT_EQ(random_state.seed, 327680u);
    expect_single(random_for(Value::of_integer(0)), 0);
}

TEST_F(RandomTest, FollowsTheGenerator) {
    std::uint64_t seed = 327680;
    for (int i = 0; i < 100000; i++) {
        // Modulo 2^32, then the low 24 bits.
        seed = (4291010243u - seed * 179203u) % 4294967296u % 16777216u;
        const Value value = i % 2 == 0 ? next_random() : random_for(Value::of_real(0.25));
        ASSERT_EQ(random_state.seed, seed);
        ASSERT_EQ(value.real, static_cast<double>(seed) / 16777216.0);
        ASSERT_EQ(value.type, Type::SINGLE);
        ASSERT_EQ(random_state.last, value.real);
    }
}

// 4291010243 - 327680 * 179203 = -54430228797; modulo 2^24 that is 11837123.
TEST_F(RandomTest, FirstNumber) {
    expect_single(next_random(), 11837123 / 16777216.0);
}

TEST_F(RandomTest, ZeroRepeatsTheLastResult) {
    const double first = next_random().real;
    const std::uint32_t seed = random_state.seed;
    expect_single(random_for(Value::of_integer(0)), first);
    expect_single(random_for(Value::of_real(0.0)), first);
    EXPECT_EQ(random_state.seed, seed);
}

TEST_F(RandomTest, NegativeArgumentsRestart) {
    // (2^32 - 1) * 179203 - 3957053 modulo 2^24 = -179203 - 3957053 + 2^24 = 12640960.
    expect_single(random_for(Value::of_integer(-1)), 12640960 / 16777216.0);
    const double second = next_random().real;
    next_random();
    expect_single(random_for(Value::of_integer(-1)), 12640960 / 16777216.0);
    expect_single(next_random(), second);
    expect_single(random_for(Value::of_real(-1.9)), 12640960 / 16777216.0);
    // Truncated toward zero -0.5 is 0: -3957053 + 2^24 = 12820163.
    expect_single(random_for(Value::of_real(-0.5)), 12820163 / 16777216.0);
}

TEST_F(RandomTest, NegativeArgumentsUseTheLow32Bits) {
    const double one = random_for(Value::of_integer(-1)).real;
    expect_single(random_for(Value::of_integer(-4294967297)), one);
    expect_single(random_for(Value::of_real(-4294967297.0)), one);
}

TEST_F(RandomTest, ArgumentsBeyondInt64Overflow) {
    EXPECT_EQ(random_for(Value::of_real(-9223372036854775808.0)).type, Type::SINGLE);
    EXPECT_EQ(take_error(), "");
    const std::uint32_t seed = random_state.seed;
    for (const double number : {9223372036854775808.0, -1e19, std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        random_for(Value::of_real(number));
        EXPECT_EQ(take_error(), "Overflow") << number;
    }
    random_for(Value::of_string(nullptr, 0));
    EXPECT_EQ(take_error(), "Type mismatch");
    EXPECT_EQ(random_state.seed, seed);
}

TEST_F(RandomTest, RandomizeUsesTheLow16Bits) {
    const double last = next_random().real;
    randomize(0);
    EXPECT_EQ(random_state.seed, 80u);
    randomize(65536);
    EXPECT_EQ(random_state.seed, 80u);
    randomize(1);
    EXPECT_EQ(random_state.seed, 336u);
    randomize(-1);
    EXPECT_EQ(random_state.seed, 65535u * 256 + 80);
    expect_single(random_for(Value::of_integer(0)), last);
}

}  // namespace
}  // namespace korvane
