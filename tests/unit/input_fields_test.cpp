#include "statements/text/input_fields.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "program/errors.h"

namespace korvane {
namespace {

// The fields of a reply, taken until there are no more.
std::vector<std::string> fields_of(std::string_view reply) {
    ReplyFields fields(reply);
    std::vector<std::string> all;
    while (const auto field = fields.next())
        all.emplace_back(*field);
    return all;
}

using Fields = std::vector<std::string>;

TEST(ReplyFields, PlainFieldsEndAtCommas) {
    EXPECT_EQ(fields_of("a,b,c"), (Fields{"a", "b", "c"}));
    EXPECT_EQ(fields_of(" \ta b\t , c "), (Fields{"a b", "c"}));
    EXPECT_EQ(fields_of("a,,c"), (Fields{"a", "", "c"}));
    EXPECT_EQ(fields_of(",a"), (Fields{"", "a"}));
}

TEST(ReplyFields, AnEmptyReplyHasOneEmptyField) {
    EXPECT_EQ(fields_of(""), (Fields{""}));
    EXPECT_EQ(fields_of(" \t "), (Fields{""}));
}

TEST(ReplyFields, ATrailingCommaStartsNoField) {
    EXPECT_EQ(fields_of("a,"), (Fields{"a"}));
    EXPECT_EQ(fields_of("a, "), (Fields{"a"}));
}

TEST(ReplyFields, QuotedFieldsKeepCommasAndBlanks) {
    EXPECT_EQ(fields_of("\"x,y\""), (Fields{"x,y"}));
    EXPECT_EQ(fields_of("\" a \"  ,b"), (Fields{" a ", "b"}));
    EXPECT_EQ(fields_of("  \"a\",\"b\""), (Fields{"a", "b"}));
    EXPECT_EQ(fields_of("\"a"), (Fields{"a"}));
    EXPECT_EQ(fields_of("\""), (Fields{""}));
    EXPECT_EQ(fields_of("\"\",b"), (Fields{"", "b"}));
    EXPECT_EQ(fields_of("\"a\"b,c"), (Fields{"a", "b", "c"}));
    EXPECT_EQ(fields_of("a\"b\""), (Fields{"a\"b\""}));
}

TEST(ReplyFields, OnlySpacesLeftIsNothingLeft) {
    ReplyFields fields("1,2   ");
    fields.next();
    EXPECT_TRUE(fields.has_more());
    fields.next();
    EXPECT_FALSE(fields.has_more());
    ReplyFields tab("\"1\"\t");
    tab.next();
    EXPECT_TRUE(tab.has_more());
    ReplyFields spaces("\"1\",  ");
    spaces.next();
    EXPECT_FALSE(spaces.has_more());
}

bool takes(std::string_view field, Type type) {
    const bool taken = number_in_field(field, type).has_value();
    EXPECT_FALSE(error_pending());
    return taken;
}

TEST(NumberInField, EachTypeTakesItsOwnRange) {
    EXPECT_TRUE(takes("32767", Type::INTEGER));
    EXPECT_FALSE(takes("32768", Type::INTEGER));
    EXPECT_TRUE(takes("-32768", Type::INTEGER));
    EXPECT_FALSE(takes("-32769", Type::INTEGER));
    EXPECT_TRUE(takes("2147483647", Type::LONG));
    EXPECT_FALSE(takes("2147483648", Type::LONG));
    EXPECT_TRUE(takes("-2147483648", Type::LONG));
    EXPECT_FALSE(takes("-2147483649", Type::LONG));
    EXPECT_TRUE(takes("9223372036854775807", Type::INT64));
    EXPECT_FALSE(takes("9223372036854775808", Type::INT64));
    EXPECT_TRUE(takes("-9223372036854775808", Type::INT64));
    EXPECT_FALSE(takes("-9223372036854775809", Type::INT64));
    EXPECT_TRUE(takes("1E300", Type::DOUBLE));
    EXPECT_TRUE(takes("1E300", Type::SINGLE));
    EXPECT_FALSE(takes("1E309", Type::DOUBLE));
}

TEST(NumberInField, FractionsCountAsTheyRound) {
    EXPECT_TRUE(takes("32767.4", Type::INTEGER));
    EXPECT_FALSE(takes("32767.5", Type::INTEGER));
    EXPECT_TRUE(takes("-32768.4", Type::INTEGER));
    EXPECT_FALSE(takes("-32768.5", Type::INTEGER));
    EXPECT_TRUE(takes("2147483647.4", Type::LONG));
    EXPECT_FALSE(takes("2147483647.5", Type::LONG));
    EXPECT_TRUE(takes("9E18", Type::INT64));
    EXPECT_FALSE(takes("9.3E18", Type::INT64));
    EXPECT_FALSE(takes("-9.3E18", Type::INT64));
}

TEST(NumberInField, WholeNumbersBeyondInt64NeedAPointOrAnExponent) {
    for (const Type type : {Type::SINGLE, Type::DOUBLE}) {
        EXPECT_TRUE(takes("9223372036854775807", type));
        EXPECT_FALSE(takes("9223372036854775808", type));
        EXPECT_TRUE(takes("9223372036854775808.", type));
        EXPECT_TRUE(takes("-9223372036854775808", type));
        EXPECT_FALSE(takes("-9223372036854775809", type));
        EXPECT_TRUE(takes("-9223372036854775809E0", type));
        EXPECT_FALSE(takes("&HFFFFFFFFFFFFFFFF", type));
    }
}

TEST(NumberInField, WhatIsNoNumberGivesNothing) {
    EXPECT_FALSE(takes("abc", Type::DOUBLE));
    EXPECT_FALSE(takes("1x", Type::DOUBLE));
    EXPECT_FALSE(takes("1 2", Type::DOUBLE));
    EXPECT_FALSE(takes("&HX", Type::INTEGER));
}

TEST(NumberInField, ValuesAreExact) {
    EXPECT_EQ(number_in_field("", Type::DOUBLE)->integer, 0);
    EXPECT_EQ(number_in_field("&HFF", Type::INTEGER)->integer, 255);
    EXPECT_EQ(number_in_field("-12", Type::DOUBLE)->integer, -12);
    const auto tenth = number_in_field("+.1", Type::DOUBLE);
    EXPECT_EQ(tenth->type, Type::DOUBLE);
    EXPECT_EQ(tenth->real, 0.1);
}

}  // namespace
}  // namespace korvane
