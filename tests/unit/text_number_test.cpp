#include "values/text_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>

#include "raised_error.h"

namespace korvane {
namespace {

using test::take_error;

void expect_integer(const std::string& text, std::int64_t expected) {
    std::int64_t integer = -12345;
    EXPECT_EQ(text_to_integer(text, integer), NumberReading::number) << text;
    EXPECT_EQ(integer, expected) << text;
    EXPECT_EQ(take_error(), "");
}

void expect_no_integer(const std::string& text) {
    std::int64_t integer = 0;
    EXPECT_EQ(text_to_integer(text, integer), NumberReading::not_a_number) << text;
    EXPECT_EQ(take_error(), "") << text;
}

void expect_integer_overflow(const std::string& text) {
    std::int64_t integer = 0;
    EXPECT_EQ(text_to_integer(text, integer), NumberReading::too_large) << text;
    EXPECT_EQ(take_error(), "") << text;
}

void expect_double(const std::string& text, double expected) {
    double number = -12345;
    EXPECT_EQ(text_to_double(text, number), NumberReading::number) << text;
    EXPECT_EQ(number, expected) << text;
    EXPECT_EQ(take_error(), "");
}

TEST(TextToIntegerTest, SignsAndBlanks) {
    expect_integer("12", 12);
    expect_integer("+12", 12);
    expect_integer("-12", -12);
    expect_integer(" \t 12 \t ", 12);
    expect_integer("", 0);
    expect_integer(" \t", 0);
    expect_integer("-0", 0);
    expect_integer("0000000000000000000000000000012", 12);
}

TEST(TextToIntegerTest, PrefixedForms) {
    expect_integer("&HFF", 255);
    expect_integer("&hff", 255);
    expect_integer("&O17", 15);
    expect_integer("-&o17", -15);
    expect_integer("+&H10 ", 16);
    expect_no_integer("&H");
    expect_no_integer("&HG");
    expect_no_integer("&O8");
    expect_no_integer("&17");
    expect_no_integer("&H1 2");
}

TEST(TextToIntegerTest, TheInt64Range) {
    expect_integer("9223372036854775807", INT64_MAX);
    expect_integer_overflow("9223372036854775808");
    expect_integer("-9223372036854775808", INT64_MIN);
    expect_integer_overflow("-9223372036854775809");
    expect_integer_overflow("99999999999999999999999999999999");
    expect_integer_overflow("18446744073709551616");
    expect_integer("&H7FFFFFFFFFFFFFFF", INT64_MAX);
    expect_integer_overflow("&H8000000000000000");
    expect_integer("-&H8000000000000000", INT64_MIN);
    expect_integer_overflow("&HFFFFFFFFFFFFFFFF");
    expect_integer_overflow("&H10000000000000000");
}

TEST(TextToIntegerTest, WhatIsNoInteger) {
    for (const char* text : {"1.5", "1.", "1E5", "1d5", "1e", ".5", "-", "+", "--1", "+-1", "- 1", "1 2",
                             "1X", "X", "12%", "1,2", "\r1", "99999999999999999999.5"})
        expect_no_integer(text);
}

TEST(TextToDoubleTest, DecimalForms) {
    expect_double("1.5", 1.5);
    expect_double(" -.5 ", -0.5);
    expect_double("+1E3", 1000);
    expect_double("1d-2", 0.01);
    expect_double("0.1", 0.1);
    expect_double("12", 12);
    expect_double("", 0);
    expect_double(" ", 0);
    expect_double("2#", 2);
    expect_double("0.1!", static_cast<double>(0.1f));
    expect_double("1.7976931348623157E308", 1.7976931348623157e308);
    expect_double("1E-999", 0);
}

TEST(TextToDoubleTest, PrefixedForms) {
    expect_double("&HFF", 255);
    expect_double("-&O10", -8);
}

TEST(TextToDoubleTest, NegativeZeroIsZero) {
    double number = 1;
    EXPECT_EQ(text_to_double("-0", number), NumberReading::number);
    EXPECT_FALSE(std::signbit(number));
}

TEST(TextToDoubleTest, WhatIsNoNumber) {
    for (const char* text :
         {"X", "1X", ".", "-", "1.5.5", "1E", "1 2", "#", "!", "&H", "&HFFG", "1##", "- 1"}) {
        double number = 0;
        EXPECT_EQ(text_to_double(text, number), NumberReading::not_a_number) << text;
        EXPECT_EQ(take_error(), "") << text;
    }
}

TEST(TextToDoubleTest, OutOfRange) {
    for (const char* text : {"1E309", "-1E309", "1E39!", "&H10000000000000000"}) {
        double number = 0;
        EXPECT_EQ(text_to_double(text, number), NumberReading::too_large) << text;
        EXPECT_EQ(take_error(), "") << text;
    }
}

void expect_real_value(const char* text, double expected) {
    const Value value = longest_number(text);
    EXPECT_EQ(value.type, Type::DOUBLE) << text;
    EXPECT_EQ(value.real, expected) << text;
    EXPECT_EQ(take_error(), "") << text;
}

TEST(LongestNumberTest, TakesTheLongestNumericBeginningAsADouble) {
    expect_real_value("12", 12);
    expect_real_value("12ABC", 12);
    expect_real_value(" \t-1.5E2 apples", -150);
    expect_real_value("1.5.5", 1.5);
    expect_real_value("1E", 1);
    expect_real_value("1E+", 1);
    expect_real_value("+.5", 0.5);
    expect_real_value("0.1", 0.1);
    expect_real_value("3D2", 300);
    expect_real_value("5%", 5);
    expect_real_value("1 2", 1);
}

TEST(LongestNumberTest, WithoutANumberItIsZero) {
    for (const char* text : {"", " ", "ABC", "-", "+", ".", "&", "&H", "&X1", "E5", "--1", "- 1"})
        expect_real_value(text, 0);
}

void expect_integer_value(const char* text, Type type, std::int64_t expected) {
    const Value value = longest_number(text);
    EXPECT_EQ(value.type, type) << text;
    EXPECT_EQ(value.integer, expected) << text;
    EXPECT_EQ(take_error(), "") << text;
}

TEST(LongestNumberTest, PrefixedFormsGiveTheirInteger) {
    expect_integer_value("&HFFFF", Type::LONG, 65535);
    expect_integer_value(" &o17 ", Type::INTEGER, 15);
    expect_integer_value("-&H10Z", Type::INTEGER, -16);
    expect_integer_value("&HFFFFFFFFFFFFFFFF", Type::INT64, -1);
    expect_integer_value("-&H8000000000000000", Type::INT64, INT64_MIN);
}

TEST(LongestNumberTest, OutOfRange) {
    for (const char* text : {"1E309", "-1E400X", "&H10000000000000000"})
        expect_integer_value(text, Type::NONE, 0);
}

}  // namespace
}  // namespace korvane
