#include "values/mbf.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "raised_error.h"
#include "random_bits.h"

namespace korvane {
namespace {

using test::RandomBits;
using test::take_error;

using Bytes = std::vector<int>;

Bytes single_image(double number) {
    std::array<std::uint8_t, 4> image{};
    EXPECT_TRUE(to_mbf_single(number, image)) << number;
    return {image.begin(), image.end()};
}

Bytes double_image(double number) {
    std::array<std::uint8_t, 8> image{};
    EXPECT_TRUE(to_mbf_double(number, image)) << number;
    return {image.begin(), image.end()};
}

double read_single(std::array<std::uint8_t, 4> image) {
    return from_mbf_single(image);
}
double read_double(std::array<std::uint8_t, 8> image) {
    return from_mbf_double(image);
}

constexpr double below_two_to_127 = 0x1.FFFFFFFFFFFFFp126;
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(MbfTest, SingleImages) {
    EXPECT_EQ(single_image(1), (Bytes{0, 0, 0, 0x81}));
    EXPECT_EQ(single_image(-1), (Bytes{0, 0, 0x80, 0x81}));
    EXPECT_EQ(single_image(0.5), (Bytes{0, 0, 0, 0x80}));
    EXPECT_EQ(single_image(10), (Bytes{0, 0, 0x20, 0x84}));
    EXPECT_EQ(single_image(3.14159274101257324), (Bytes{0xDB, 0x0F, 0x49, 0x82}));
    EXPECT_EQ(single_image(0), (Bytes{0, 0, 0, 0}));
}

TEST(MbfTest, DoubleImages) {
    EXPECT_EQ(double_image(1), (Bytes{0, 0, 0, 0, 0, 0, 0, 0x81}));
    EXPECT_EQ(double_image(-2.5), (Bytes{0, 0, 0, 0, 0, 0, 0xA0, 0x82}));
    // Fraction 0x5555555555555, shifted up by 3 into 55 bits: 0x2AAAAAAAAAAAA8; exponent -2.
    EXPECT_EQ(double_image(1.0 / 3), (Bytes{0xA8, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0x2A, 0x7F}));
    // Byte 0 carries the lowest 5 fraction bits shifted up by 3.
    EXPECT_EQ(double_image(1 + 0x1Fp-52), (Bytes{0xF8, 0, 0, 0, 0, 0, 0, 0x81}));
}

TEST(MbfTest, BelowTheRangeIsZero) {
    EXPECT_EQ(double_image(0x1p-128), (Bytes{0, 0, 0, 0, 0, 0, 0, 1}));
    for (const double number : {0.0, -0.0, 0x1.FFFFFFFFFFFFFp-129, -0x1p-129, 0x1p-1074}) {
        EXPECT_EQ(double_image(number), Bytes(8, 0));
        EXPECT_EQ(single_image(number), Bytes(4, 0));
    }
    EXPECT_EQ(single_image(-0x1p-128), (Bytes{0, 0, 0x80, 1}));
}

TEST(MbfTest, AboveTheRangeIsAnOverflow) {
    EXPECT_EQ(double_image(below_two_to_127), (Bytes{0xF8, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0xFF}));
    EXPECT_EQ(single_image(0x1.FFFFFEp126), (Bytes{0xFF, 0xFF, 0x7F, 0xFF}));
    std::array<std::uint8_t, 8> wide{};
    std::array<std::uint8_t, 4> narrow{};
    for (const double number :
         {0x1p127, -0x1p127, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(to_mbf_double(number, wide));
        EXPECT_EQ(take_error(), "Overflow");
        EXPECT_FALSE(to_mbf_single(number, narrow));
        EXPECT_EQ(take_error(), "Overflow");
    }
    // Rounds up to 2^127.
    EXPECT_FALSE(to_mbf_single(below_two_to_127, narrow));
    EXPECT_EQ(take_error(), "Overflow");
}

TEST(MbfTest, SingleRoundsToNearestTiesToEven) {
    EXPECT_EQ(single_image(1 + 0x1p-24), (Bytes{0, 0, 0, 0x81}));
    EXPECT_EQ(single_image(1 + 0x1.0000001p-24), (Bytes{1, 0, 0, 0x81}));
    EXPECT_EQ(single_image(1 + 0x3p-24), (Bytes{2, 0, 0, 0x81}));
    EXPECT_EQ(single_image(2 - 0x1p-24), (Bytes{0, 0, 0, 0x82}));
    EXPECT_EQ(single_image(0.1), (Bytes{0xCD, 0xCC, 0x4C, 0x7D}));
}

TEST(MbfTest, ReadingImages) {
    EXPECT_EQ(read_single({0, 0, 0, 0x81}), 1);
    EXPECT_EQ(read_single({0, 0, 0x80, 0x81}), -1);
    EXPECT_EQ(read_single({0xFF, 0xFF, 0xFF, 0}), 0);
    EXPECT_EQ(read_single({0xFF, 0xFF, 0x7F, 0xFF}), 0x1.FFFFFEp126);
    EXPECT_EQ(read_single({0, 0, 0, 1}), 0x1p-128);
    EXPECT_EQ(read_double({0xA8, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0x2A, 0x7F}), 1.0 / 3);
    EXPECT_EQ(read_double({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0}), 0);
    EXPECT_EQ(read_double({0, 0, 0, 0, 0, 0, 0x80, 1}), -0x1p-128);
}

TEST(MbfTest, ReadingRoundsThe56BitMantissaToNearestTiesToEven) {
    EXPECT_EQ(read_double({4, 0, 0, 0, 0, 0, 0, 0x81}), 1);
    EXPECT_EQ(read_double({5, 0, 0, 0, 0, 0, 0, 0x81}), 1 + 0x1p-52);
    EXPECT_EQ(read_double({12, 0, 0, 0, 0, 0, 0, 0x81}), 1 + 0x2p-52);
    EXPECT_EQ(read_double({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 0x81}), 2);
    EXPECT_EQ(read_double({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), -0x1p127);
}

TEST(MbfTest, RandomNumbersComeBack) {
    RandomBits random(5);
    for (int i = 0; i < 100000; i++) {
        const double number =
            std::ldexp(random.between(1, 2), random.below(255) - 128) * (i % 2 == 0 ? 1 : -1);
        std::array<std::uint8_t, 8> wide{};
        ASSERT_TRUE(to_mbf_double(number, wide));
        ASSERT_EQ(from_mbf_double(wide), number);
        const double narrow = static_cast<double>(static_cast<float>(number));
        if (std::fabs(number) < 0x1p-126 || std::fabs(narrow) >= 0x1p127) continue;
        std::array<std::uint8_t, 4> image{};
        ASSERT_TRUE(to_mbf_single(number, image));
        ASSERT_EQ(from_mbf_single(image), narrow);
    }
}

}  // namespace
}  // namespace korvane
