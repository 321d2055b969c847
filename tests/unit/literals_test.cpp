#include "program/literals.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "raised_error.h"

namespace korvane {
namespace {

using test::take_error;

struct Reading {
    Value value;
    std::size_t length;
    std::string error;
};

Reading read(const std::string& text) {
    const auto* start = reinterpret_cast<const std::uint8_t*>(text.c_str());
    const std::uint8_t* end = start;
    Reading reading{Value::nothing(), 0, {}};
    const bool good = read_literal(end, reading.value);
    reading.length = static_cast<std::size_t>(end - start);
    reading.error = take_error();
    EXPECT_EQ(good, reading.error.empty()) << text;
    return reading;
}

void expect_integer(const std::string& text, Type type, std::int64_t integer) {
    const Reading reading = read(text);
    EXPECT_EQ(reading.error, "") << text;
    EXPECT_EQ(reading.value.type, type) << text;
    EXPECT_EQ(reading.value.integer, integer) << text;
    EXPECT_EQ(reading.length, text.size()) << text;
}

void expect_real(const std::string& text, Type type, double real) {
    const Reading reading = read(text);
    EXPECT_EQ(reading.error, "") << text;
    EXPECT_EQ(reading.value.type, type) << text;
    EXPECT_EQ(reading.value.real, real) << text;
    EXPECT_EQ(reading.length, text.size()) << text;
}

void expect_length(const std::string& text, std::size_t length) {
    const Reading reading = read(text);
    EXPECT_EQ(reading.error, "") << text;
    EXPECT_EQ(reading.length, length) << text;
}

TEST(LiteralsTest, IntegerSuffixesGiveTheirTypesUpToTheirLimits) {
    expect_integer("0%", Type::INTEGER, 0);
    expect_integer("32767%", Type::INTEGER, 32767);
    EXPECT_EQ(read("32768%").error, "Overflow");
    expect_integer("5&", Type::LONG, 5);
    expect_integer("2147483647&", Type::LONG, 2147483647);
    EXPECT_EQ(read("2147483648&").error, "Overflow");
    expect_integer("5&&", Type::INT64, 5);
    expect_integer("9223372036854775807&&", Type::INT64, INT64_MAX);
    EXPECT_EQ(read("9223372036854775808&&").error, "Overflow");
    EXPECT_EQ(read("99999999999999999999999999&&").error, "Overflow");
    EXPECT_EQ(read("99999999999999999999999999%").error, "Overflow");
    expect_integer("00000000000000000000000000000007&&", Type::INT64, 7);
}

TEST(LiteralsTest, PointsAndExponentsDoNotGoWithIntegerSuffixes) {
    for (const char* suffix : {"%", "&", "&&"})
        for (const char* number : {"1.5", "1.", ".5", "1E2", "1D2", "1.5E2", "99999.5"})
            EXPECT_EQ(read(std::string(number) + suffix).error, "Syntax Error") << number << suffix;
}

TEST(LiteralsTest, FloatingSuffixes) {
    expect_real("5!", Type::SINGLE, 5);
    expect_real("0.1!", Type::SINGLE, static_cast<double>(0.1f));
    expect_real("123456789!", Type::SINGLE, 123456792);
    expect_real("1D2!", Type::SINGLE, 100);
    expect_real("5#", Type::DOUBLE, 5);
    expect_real("0.1#", Type::DOUBLE, 0.1);
    expect_real(".1E1#", Type::DOUBLE, 1);
    EXPECT_EQ(read("1E39!").error, "Overflow");
    EXPECT_EQ(read("1E309#").error, "Overflow");
}

TEST(LiteralsTest, WithoutSuffixAShortIntegerIsAnInteger) {
    expect_integer("0", Type::INTEGER, 0);
    expect_integer("32767", Type::INTEGER, 32767);
    expect_integer("000000000032767", Type::INTEGER, 32767);
    expect_real("32768", Type::SINGLE, 32768);
    expect_real("40000", Type::SINGLE, 40000);
    expect_real("9999999", Type::SINGLE, 9999999);
    expect_real("10000000", Type::DOUBLE, 10000000);
    expect_real("123456789", Type::DOUBLE, 123456789);
    expect_real("9223372036854775807", Type::DOUBLE, 9223372036854775807.0);
    expect_real("99999999999999999999999999", Type::DOUBLE, 1e26);
}

TEST(LiteralsTest, WithoutSuffixTheDigitsAsWrittenDecideBetweenSingleAndDouble) {
    expect_real("1.5", Type::SINGLE, 1.5);
    expect_real("5.", Type::SINGLE, 5);
    expect_real(".1", Type::SINGLE, static_cast<double>(0.1f));
    expect_real("1.234567", Type::SINGLE, static_cast<double>(1.234567f));
    expect_real("1.2345678", Type::DOUBLE, 1.2345678);
    expect_real("0.000001", Type::SINGLE, static_cast<double>(0.000001f));
    expect_real("0.0000001", Type::DOUBLE, 0.0000001);
    expect_real("1E5", Type::SINGLE, 100000);
    expect_real("1e+5", Type::SINGLE, 100000);
    expect_real("1E-2", Type::SINGLE, static_cast<double>(0.01f));
    expect_real("1234567E00000001", Type::SINGLE, 12345670);
    expect_real("12345678E1", Type::DOUBLE, 123456780);
    expect_real("1D5", Type::DOUBLE, 100000);
    expect_real("1d-1", Type::DOUBLE, 0.1);
}

TEST(LiteralsTest, WhatDoesNotFitASingleIsADouble) {
    expect_real("3.402823E38", Type::SINGLE, static_cast<double>(3.402823e38f));
    expect_real("3.402824E38", Type::DOUBLE, 3.402824e38);
    expect_real("1E39", Type::DOUBLE, 1e39);
    expect_real("1E-45", Type::SINGLE, 0x1p-149);
    expect_real("1E-46", Type::DOUBLE, 1e-46);
    expect_real("1E-400", Type::SINGLE, 0);
    expect_real("0E99", Type::SINGLE, 0);
    expect_real("1E308", Type::DOUBLE, 1e308);
    EXPECT_EQ(read("1E309").error, "Overflow");
    EXPECT_EQ(read("1D309").error, "Overflow");
}

TEST(LiteralsTest, AnExponentLetterWithoutDigitsIsNotPartOfTheLiteral) {
    expect_length("1ELSE", 1);
    expect_length("1E", 1);
    expect_length("1E+", 1);
    expect_length("1.5D-X", 3);
    EXPECT_EQ(read("1ELSE").value.type, Type::INTEGER);
}

TEST(LiteralsTest, TheLiteralEndsWhereItsFormEnds) {
    expect_length("1 2", 1);
    expect_length("1.5.5", 3);
    expect_length("1-2", 1);
    expect_length("1%%", 2);
    expect_length("1&&&", 3);
    expect_length("1E5E5", 3);
    expect_length("1!#", 2);
    expect_length("7:PRINT", 1);
}

TEST(LiteralsTest, HexadecimalAndOctalWithoutSuffixAreTheNarrowestTypeAndNeverNegativeBelow64Bits) {
    expect_integer("&H0", Type::INTEGER, 0);
    expect_integer("&H7FFF", Type::INTEGER, 32767);
    expect_integer("&H8000", Type::LONG, 32768);
    expect_integer("&HFFFF", Type::LONG, 65535);
    expect_integer("&h7fffffff", Type::LONG, 2147483647);
    expect_integer("&H80000000", Type::INT64, 2147483648);
    expect_integer("&H7FFFFFFFFFFFFFFF", Type::INT64, INT64_MAX);
    expect_integer("&H8000000000000000", Type::INT64, INT64_MIN);
    expect_integer("&HFFFFFFFFFFFFFFFF", Type::INT64, -1);
    expect_integer("&O17", Type::INTEGER, 15);
    expect_integer("&o77777", Type::INTEGER, 32767);
    expect_integer("&O100000", Type::LONG, 32768);
    expect_integer("&O1777777777777777777777", Type::INT64, -1);
    expect_integer("&H00000000000000000000000000000001", Type::INTEGER, 1);
}

TEST(LiteralsTest, SuffixesOfHexadecimalLiteralsTakeTheBitsAsTheyAre) {
    expect_integer("&H8000%", Type::INTEGER, 32768);
    expect_integer("&HFFFFFFFFFFFFFFFF%", Type::INTEGER, -1);
    expect_integer("&HFFFFFFFF&", Type::LONG, 4294967295);
    expect_integer("&H1&&", Type::INT64, 1);
    expect_integer("&O7%", Type::INTEGER, 7);
    expect_length("&H1!", 3);
    expect_length("&H1#", 3);
}

TEST(LiteralsTest, HexadecimalAndOctalFaults) {
    for (const char* text : {"&", "&1", "&X", "&G1", "& H1", "&H", "&HG", "&O", "&O8", "&H ", "&&H1"})
        EXPECT_EQ(read(text).error, "Syntax Error") << text;
    EXPECT_EQ(read("&H10000000000000000").error, "Overflow");
    EXPECT_EQ(read("&O2000000000000000000000").error, "Overflow");
    EXPECT_EQ(read("&H10000000000000000%").error, "Overflow");
}

TEST(LiteralsTest, DigitsOfTheOtherBaseEndTheLiteral) {
    expect_length("&O178", 4);
    expect_length("&H1G", 3);
    expect_length("&O1F", 3);
}

}  // namespace
}  // namespace korvane
