#include <gtest/gtest.h>

#include "explorer/number_syntax.h"

namespace korvane {
namespace {

TEST(NumberSyntax, NumbersAreHexadecimalWithoutPrefix) {
    EXPECT_EQ(parse_number("1000"), 0x1000u);
    EXPECT_EQ(parse_number("abCDef"), 0xABCDEFu);
    EXPECT_EQ(parse_number("D"), 0xDu);
    EXPECT_EQ(parse_number("0"), 0u);
}

TEST(NumberSyntax, PrefixesOfEitherCaseChooseTheBase) {
    EXPECT_EQ(parse_number("&H1000"), 4096u);
    EXPECT_EQ(parse_number("&h1000"), 4096u);
    EXPECT_EQ(parse_number("0X1000"), 4096u);
    EXPECT_EQ(parse_number("0x1000"), 4096u);
    EXPECT_EQ(parse_number("D:4096"), 4096u);
    EXPECT_EQ(parse_number("d:4096"), 4096u);
}

TEST(NumberSyntax, PrefixAloneIsNoNumber) {
    EXPECT_FALSE(parse_number("&H"));
    EXPECT_FALSE(parse_number("0X"));
    EXPECT_FALSE(parse_number("D:"));
    EXPECT_FALSE(parse_number(""));
    EXPECT_FALSE(parse_number("&"));
}

TEST(NumberSyntax, EveryCharacterMustBeADigitOfTheBase) {
    EXPECT_FALSE(parse_number("12G4"));
    EXPECT_FALSE(parse_number("ZZ"));
    EXPECT_FALSE(parse_number("D:1A"));
    EXPECT_FALSE(parse_number("-1"));
    EXPECT_FALSE(parse_number("&H0X10"));
    EXPECT_FALSE(parse_number("&O17"));
    EXPECT_FALSE(parse_number("1\xFF"));
}

TEST(NumberSyntax, TheLargestNumberIsTwoToThe64MinusOne) {
    EXPECT_EQ(parse_number("FFFFFFFFFFFFFFFF"), 0xFFFFFFFFFFFFFFFFu);
    EXPECT_EQ(parse_number("D:18446744073709551615"), 0xFFFFFFFFFFFFFFFFu);
    EXPECT_FALSE(parse_number("10000000000000000"));
    EXPECT_FALSE(parse_number("1FFFFFFFFFFFFFFFF"));
    EXPECT_FALSE(parse_number("D:18446744073709551616"));
    EXPECT_FALSE(parse_number("D:99999999999999999999"));
    EXPECT_EQ(parse_number("00000000000000000000000000000041"), 0x41u);
}

TEST(NumberSyntax, BytesEndAt255) {
    EXPECT_EQ(parse_byte("FF"), 0xFF);
    EXPECT_EQ(parse_byte("D:255"), 0xFF);
    EXPECT_FALSE(parse_byte("100"));
    EXPECT_FALSE(parse_byte("D:256"));
    EXPECT_FALSE(parse_byte("G"));
}

}  // namespace
}  // namespace korvane
