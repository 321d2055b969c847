// Conversion of decimal text, with the C library's correctly rounded strtod and strtof as the oracle.
#include "numbers/decimal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "random_bits.h"

namespace korvane {
namespace {

using test::RandomBits;

std::uint64_t bits_of(double number) {
    return std::bit_cast<std::uint64_t>(number);
}

void expect_right(const std::string& text) {
    ASSERT_EQ(scan_decimal(text).length, text.size()) << text;
    EXPECT_EQ(bits_of(decimal_to_double(text)), bits_of(std::strtod(text.c_str(), nullptr))) << text;
    EXPECT_EQ(bits_of(decimal_to_single(text)), bits_of(std::strtof(text.c_str(), nullptr))) << text;
}

std::string print(const char* format, auto... arguments) {
    std::vector<char> text(2000);
    const int size = std::snprintf(text.data(), text.size(), format, arguments...);
    return {text.data(), static_cast<std::size_t>(size)};
}

TEST(DecimalTest, RandomDigitsAndExponents) {
    RandomBits random(1);
    for (long i = 0; i < test::numeric_arguments() / 2; i++) {
        std::string text;
        const int whole = random.below(25);
        for (int digit = 0; digit < whole; digit++)
            text += static_cast<char>('0' + random.below(10));
        if (random.below(2) == 0) text += '.';
        const int rest = text.find('.') == std::string::npos ? (text.empty() ? 1 : 0) : random.below(25) + 1;
        for (int digit = 0; digit < rest; digit++)
            text += static_cast<char>('0' + random.below(10));
        if (random.below(3) != 0) {
            text += 'E';
            text += std::to_string(random.below(700) - 350);
        }
        expect_right(text);
    }
}

TEST(DecimalTest, ShortestAndLongFormsOfRandomNumbers) {
    RandomBits random(2);
    for (long i = 0; i < test::numeric_arguments() / 2; i++) {
        const double number = std::fabs(random.any());
        expect_right(print("%.*e", 10 + random.below(20), number));
    }
}

TEST(DecimalTest, SmallNumbersAsPeopleWriteThem) {
    RandomBits random(3);
    for (int i = 0; i < 50000; i++)
        expect_right(print("%.*f", random.below(8), random.between(0, 100000)));
}

// Each power of ten with heads that fill 64 bits, that are short, and that end in nines or zeros.
TEST(DecimalTest, EveryPowerOfTen) {
    RandomBits random(5);
    const long heads = std::max(test::numeric_arguments() / 500, 20L);
    for (int power = -345; power <= 310; power++) {
        const std::string exponent = "E" + std::to_string(power);
        for (long i = 0; i < heads; i++) {
            const std::uint64_t head = random.bits() >> random.below(64);
            expect_right(std::to_string(head) + exponent);
            expect_right(std::to_string(head % 10) +
                         std::string(static_cast<std::size_t>(random.below(24)), '9') + exponent);
            expect_right(std::to_string(head) + std::string(static_cast<std::size_t>(random.below(24)), '0') +
                         exponent);
            expect_right("0." + std::to_string(head) + exponent);
        }
        for (const char* head :
             {"1", "9", "9999999999999999999", "10000000000000000000", "18446744073709551615",
              "18446744073709551616", "9223372036854775808", "9007199254740993"})
            expect_right(head + exponent);
    }
}

// Numbers of the very bits of a binary64, and of one more, in all their digits: with a large power of ten
// in front of the point or behind it the quick way meets its exact cases and its undecided ones.
TEST(DecimalTest, ExactNumbersAndHalves) {
    RandomBits random(6);
    for (int exponent = -1074; exponent <= 970; exponent++) {
        for (const std::uint64_t odd : {std::uint64_t{1}, std::uint64_t{3}, (std::uint64_t{1} << 53) - 1,
                                        (std::uint64_t{1} << 54) - 1, (random.bits() >> 10) | 1}) {
            const long double number = std::ldexp(static_cast<long double>(odd), exponent);
            expect_right(print("%.1100Lf", number));
            expect_right(print("%.17Le", number));
            expect_right(print("%.25Le", number));
        }
    }
}

// Exactly between two neighbours, and the least bit to either side of it, hundreds of digits away.
TEST(DecimalTest, MidpointsAndTheirNeighbours) {
    RandomBits random(4);
    for (int i = 0; i < 20000; i++) {
        const bool single = i % 2 == 0;
        double low = std::fabs(random.any());
        double high = std::nextafter(low, HUGE_VAL);
        if (single) {
            const auto narrow = std::bit_cast<float>(static_cast<std::uint32_t>(random.bits() % 0x7F800000u));
            low = narrow;
            high = std::nextafterf(narrow, HUGE_VALF);
        }
        if (std::isinf(high)) continue;
        const long double middle = (static_cast<long double>(low) + high) / 2;
        std::string text = print("%.1100Lf", middle);
        while (text.back() == '0')
            text.pop_back();
        expect_right(text);
        expect_right(text + "0000000000000000000000000000");
        if (text.back() == '.') text += '0';
        expect_right(text + "0000000000000000000000000001");
        if (text.back() != '0') {
            text.back()--;
            expect_right(text + "9999999999999999999999999999");
        }
    }
}

TEST(DecimalTest, LimitsOfTheRanges) {
    for (const char* text : {"1.7976931348623157E308",
                             "1.7976931348623158E308",
                             "1.7976931348623159E308",
                             "1E309",
                             "9.9E308",
                             "1E310",
                             "4.9406564584124654E-324",
                             "2.4703282292062327E-324",
                             "2.4703282292062328E-324",
                             "2E-324",
                             "1E-324",
                             "1E-400",
                             "2.2250738585072011E-308",
                             "2.2250738585072014E-308",
                             "3.4028234663852886E38",
                             "3.4028235677E38",
                             "3.4028235678E38",
                             "1E39",
                             "1.401298464324817E-45",
                             "7.0064923216240853E-46",
                             "7.0064923216240854E-46",
                             "1.1754943508222875E-38",
                             "1.1754942E-38",
                             "0",
                             "0.0",
                             "0E999",
                             "0000000.000000E-999",
                             "1E999999999",
                             "1E-999999999",
                             "9007199254740993",
                             "9007199254740992.99999999999999999999999999",
                             "16777217",
                             "1E22",
                             "1E23",
                             "123456789012345678901234567890"})
        expect_right(text);
}

TEST(DecimalTest, LengthIsNoLimit) {
    const std::string zeros(100000, '0');
    const std::string nines(100000, '9');
    expect_right("0." + zeros + "1E100001");
    expect_right("1" + zeros + "E-100000");
    expect_right(zeros + "1.5" + zeros);
    expect_right("0." + nines);
    expect_right(nines + "E-100000");
    expect_right("1.5E" + zeros + "2");
    EXPECT_EQ(decimal_to_double("1E99999999999999999999999999999999"), HUGE_VAL);
    EXPECT_EQ(decimal_to_double("1E-99999999999999999999999999999999"), 0);
}

// The first digits are summed up in 64 bits, which may come out as 0 when there are more of them.
TEST(DecimalTest, MultiplesOf64BitsAreNoZeros) {
    for (const std::string number :
         {"18446744073709551616", "36893488147419103232", "1844674407370955161600000"}) {
        for (const std::string zeros : {"", "0", "0000000000000000000000", "0.", ".000", "00.00"}) {
            expect_right(zeros + number);
            expect_right(zeros + number + "E-300");
            if (zeros.find('.') != std::string::npos) continue;
            expect_right(zeros + number + ".");
            expect_right(zeros + number + ".18446744073709551616E290");
            expect_right(zeros + "1." + number + "E17");
        }
    }
}

// Zeros in front are no part of what 64 bits hold, and say nothing of how large a number is.
TEST(DecimalTest, ZerosInFrontDoNotCount) {
    for (std::size_t zeros = 0; zeros <= 25; zeros++) {
        for (const std::string number :
             {"0", "1", "2.5", "179769313486231", "4.9406564584124654", "9999999999999999999"}) {
            for (const int exponent :
                 {-1000, -370, -352, -351, -350, -343, -330, -324, -323, -308, -23, -22, -1,  0,
                  1,     22,   23,   289,  290,  299,  307,  308,  309,  310,  323, 324, 350, 1000}) {
                const std::string behind = number + "E" + std::to_string(exponent);
                expect_right(std::string(zeros, '0') + behind);
                if (number.find('.') == std::string::npos)
                    expect_right("0." + std::string(zeros, '0') + behind);
            }
        }
    }
}

TEST(DecimalTest, ExponentLettersAreEAndDOfEitherCase) {
    for (const char* text : {"15E1", "15e1", "15D1", "15d1", "15E+1", "15D+01"})
        EXPECT_EQ(decimal_to_double(text), 150) << text;
    EXPECT_EQ(decimal_to_double("15E-1"), 1.5);
    EXPECT_EQ(decimal_to_double("15d-01"), 1.5);
}

TEST(DecimalTest, ScanFindsTheLongestNumber) {
    const auto length = [](const char* text) { return scan_decimal(text).length; };
    EXPECT_EQ(length("12"), 2u);
    EXPECT_EQ(length("12."), 3u);
    EXPECT_EQ(length("12.5.5"), 4u);
    EXPECT_EQ(length(".5"), 2u);
    EXPECT_EQ(length("1E5"), 3u);
    EXPECT_EQ(length("1E+5X"), 4u);
    EXPECT_EQ(length("1ELSE"), 1u);
    EXPECT_EQ(length("1E+"), 1u);
    EXPECT_EQ(length("1.E"), 2u);
    EXPECT_EQ(length("1F5"), 1u);
    for (const char* text : {"", ".", ".E5", "E5", "-1", "+1", " 1", "&H1", "X"})
        EXPECT_EQ(length(text), 0u) << text;
}

TEST(DecimalTest, ScanDescribesTheNumber) {
    const DecimalShape shape = scan_decimal("0012.340D5");
    EXPECT_EQ(shape.digits, 7u);
    EXPECT_TRUE(shape.point);
    EXPECT_EQ(shape.exponent_letter, 'D');
    EXPECT_EQ(scan_decimal("5e1").exponent_letter, 'E');
    EXPECT_EQ(scan_decimal("5").exponent_letter, 0);
    EXPECT_FALSE(scan_decimal("5").point);
}

TEST(DecimalTest, PowersOfTenAreCorrectlyRounded) {
    for (int exponent = 0; exponent <= 308; exponent++)
        EXPECT_EQ(power_of_ten(exponent), std::strtod(print("1e%d", exponent).c_str(), nullptr));
}

}  // namespace
}  // namespace korvane
