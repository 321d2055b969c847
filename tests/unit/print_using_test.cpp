// The field language of PRINT USING: taking formats apart, known fields, and random fields against a plain
// re-implementation of the formatter's steps.
#include "numbers/print_using.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "numbers/format.h"
#include "random_bits.h"

namespace korvane {
namespace {

using test::RandomBits;

constexpr double infinity = std::numeric_limits<double>::infinity();

std::vector<UsingItem> items_of(const std::string& format) {
    std::vector<UsingItem> items;
    std::size_t position = 0;
    while (true) {
        const UsingItem item = next_using_item(format, position);
        if (item.kind == UsingKind::end) return items;
        items.push_back(item);
    }
}

// A format as one character per item: literals as they are, fields as ! & \ #.
std::string outline(const std::string& format) {
    std::string text;
    for (const UsingItem& item : items_of(format)) {
        switch (item.kind) {
            case UsingKind::literal:
                text += item.character;
                break;
            case UsingKind::first_byte:
                text += "<!>";
                break;
            case UsingKind::whole_string:
                text += "<&>";
                break;
            case UsingKind::fixed_string:
                text += "<" + std::to_string(item.width) + ">";
                break;
            default:
                text += "<#>";
        }
    }
    return text;
}

NumericField field_of(const std::string& format) {
    const std::vector<UsingItem> items = items_of(format);
    EXPECT_EQ(items.size(), 1u) << format;
    EXPECT_EQ(items[0].kind, UsingKind::number) << format;
    return items[0].field;
}

std::string format(const std::string& field, double number) {
    FieldText text;
    format_field(number, field_of(field), text);
    return std::string(text.view());
}

TEST(PrintUsingTest, StringFields) {
    EXPECT_EQ(outline("!"), "<!>");
    EXPECT_EQ(outline("&"), "<&>");
    EXPECT_EQ(outline("\\\\"), "<2>");
    EXPECT_EQ(outline("\\  \\"), "<4>");
    EXPECT_EQ(outline("a\\ \\b"), "a<3>b");
    EXPECT_EQ(outline("\\  x"), "<4>x");
    EXPECT_EQ(outline("\\"), "<2>");
    EXPECT_EQ(outline("!&!"), "<!><&><!>");
}

TEST(PrintUsingTest, LiteralsAndUnderscore) {
    EXPECT_EQ(outline("abc 1"), "abc 1");
    EXPECT_EQ(outline("_#_!_&_\\__"), "#!&\\_");
    EXPECT_EQ(outline("a_"), "a_");
    EXPECT_EQ(outline("_"), "_");
    EXPECT_EQ(outline("-^,%"), "-^,%");
    EXPECT_EQ(outline(""), "");
}

TEST(PrintUsingTest, WhereNumericFieldsStart) {
    EXPECT_EQ(outline("#"), "<#>");
    EXPECT_EQ(outline("."), "<#>");
    EXPECT_EQ(outline("$$"), "<#>");
    EXPECT_EQ(outline("**"), "<#>");
    EXPECT_EQ(outline("$"), "$");
    EXPECT_EQ(outline("*"), "*");
    EXPECT_EQ(outline("$#"), "$<#>");
    EXPECT_EQ(outline("*#"), "*<#>");
    EXPECT_EQ(outline("+"), "+");
    EXPECT_EQ(outline("+a"), "+a");
    EXPECT_EQ(outline("++#"), "+<#>");
    EXPECT_EQ(outline("+#"), "<#>");
    EXPECT_EQ(outline("+."), "<#>");
    EXPECT_EQ(outline("+$$"), "<#>");
    EXPECT_EQ(outline("+**"), "<#>");
    EXPECT_EQ(outline("-#"), "-<#>");
    EXPECT_EQ(outline("## ##"), "<#> <#>");
    EXPECT_EQ(outline("#+#"), "<#><#>");
    EXPECT_EQ(outline("#-#"), "<#><#>");
    EXPECT_EQ(outline("#^^#"), "<#><#>");
}

// A field may begin with + and a single $ or *, which then is not part of it.
TEST(PrintUsingTest, PlusBeforeASingleDollarOrStarIsAFieldWithoutDigits) {
    EXPECT_EQ(outline("+$"), "<#>$");
    EXPECT_EQ(outline("+*#"), "<#>*<#>");
}

TEST(PrintUsingTest, PartsOfANumericField) {
    const NumericField plain = field_of("##.###");
    EXPECT_EQ(plain.digits_before, 2);
    EXPECT_EQ(plain.digits_after, 3);
    EXPECT_TRUE(plain.point);
    EXPECT_FALSE(plain.comma || plain.leading_plus || plain.trailing_sign || plain.dollar ||
                 plain.star_fill || plain.exponent);
    EXPECT_EQ(plain.extra_width, 0u);

    const NumericField dollar = field_of("+$$#,###.##^^^^-");
    EXPECT_EQ(dollar.digits_before, 4);
    EXPECT_EQ(dollar.digits_after, 2);
    EXPECT_TRUE(dollar.comma && dollar.leading_plus && dollar.trailing_sign && dollar.dollar &&
                dollar.exponent);
    EXPECT_EQ(dollar.extra_width, 1u);

    const NumericField star = field_of("+**#+");
    EXPECT_TRUE(star.star_fill && star.trailing_sign);
    EXPECT_FALSE(star.leading_plus);
    EXPECT_EQ(star.extra_width, 2u);

    EXPECT_EQ(field_of("#.#.#").digits_after, 2);
    EXPECT_TRUE(field_of("#^").exponent);
}

TEST(PrintUsingTest, OnlyTheFirst255CharactersCount) {
    EXPECT_EQ(outline(std::string(255, 'a') + "#"), std::string(255, 'a'));
    EXPECT_EQ(field_of(std::string(300, '#')).digits_before, 255);
    EXPECT_EQ(outline(std::string(254, 'a') + "_#"), std::string(254, 'a') + "_");
}

TEST(PrintUsingTest, FixedFields) {
    EXPECT_EQ(format("##.##", 3.14159), " 3.14");
    EXPECT_EQ(format("###", 12), " 12");
    EXPECT_EQ(format("###", 12.5), " 13");
    EXPECT_EQ(format("#.##", 0.005), "0.01");
    EXPECT_EQ(format("##.##", 0.25), " 0.25");
    EXPECT_EQ(format(".##", 0.25), "%0.25");
    EXPECT_EQ(format("##.", 5), " 5.");
    EXPECT_EQ(format("#", 0), "0");
    EXPECT_EQ(format(".", 0), "%0.");
    EXPECT_EQ(format("###.#", 99.96), "100.0");
}

TEST(PrintUsingTest, TheSignTakesNoPositionOfTheWidth) {
    EXPECT_EQ(format("##", -5), " -5");
    EXPECT_EQ(format("##", -55), "-55");
    EXPECT_EQ(format("+##", 5), " +5");
    EXPECT_EQ(format("+##", -5), " -5");
    EXPECT_EQ(format("##", -0.25), " -0");
    EXPECT_EQ(format("+##", 0), " +0");
}

TEST(PrintUsingTest, TrailingSignsShowPlusToo) {
    EXPECT_EQ(format("##+", 5), " 5+");
    EXPECT_EQ(format("##+", -5), " 5-");
    EXPECT_EQ(format("##-", -5), " 5-");
    EXPECT_EQ(format("##-", 5), " 5+");
    EXPECT_EQ(format("+##+", 5), " 5+");
    EXPECT_EQ(format("+##-", 5), " 5+");
}

TEST(PrintUsingTest, CommasDollarsAndStars) {
    EXPECT_EQ(format("###,###", 1234567), "%1,234,567");
    EXPECT_EQ(format("####,###", 1234567), "%1,234,567");
    EXPECT_EQ(format("#########,", 1234567), "1,234,567");
    EXPECT_EQ(format("#,###", 999), " 999");
    EXPECT_EQ(format("#######,.##", 12345.678), " 12,345.68");
    EXPECT_EQ(format("$$##", 5), " $5");
    EXPECT_EQ(format("$$##", 555), "%$555");
    EXPECT_EQ(format("$$##", -5), " $-5");
    EXPECT_EQ(format("**##", 5), "***5");
    EXPECT_EQ(format("**##", 12345), "%12345");
    EXPECT_EQ(format("**##", -5), "***-5");
    EXPECT_EQ(format("+**##.#", 5), "***+5.0");
}

TEST(PrintUsingTest, FieldsTooSmallAreMarked) {
    EXPECT_EQ(format("#", 10), "%10");
    EXPECT_EQ(format("#", -10), "%-10");
    EXPECT_EQ(format("#.#", 99.96), "%100.0");
    EXPECT_EQ(format("#", 9.4), "9");
}

TEST(PrintUsingTest, ExponentFields) {
    EXPECT_EQ(format("#.##^^^^", 12345), "1.23E+04");
    EXPECT_EQ(format("#.##^^^^", 12), "12");
    EXPECT_EQ(format("#^", 12345), "1E+04");
    EXPECT_EQ(format("###.##^^^^", -0.00012345), "-.000123");
    EXPECT_EQ(format("###.##^^^^", -0.000012345), "-1.23E-05");
    EXPECT_EQ(format("+#.##^^^^", 1e100), "+1E+100");
    EXPECT_EQ(format("#.##^^^^-", 5), "5");
    EXPECT_EQ(format("**#.##^^^^", 5), "5");
    EXPECT_EQ(format("#.##^^^^", 0), "0");
}

TEST(PrintUsingTest, InfinitiesAndNaN) {
    EXPECT_EQ(format("####", infinity), " INF");
    EXPECT_EQ(format("###.##", -infinity), "   -INF");
    EXPECT_EQ(format("#", std::numeric_limits<double>::quiet_NaN()), "%NAN");
    EXPECT_EQ(format("#.##^^^^", infinity), "INF");
}

// Digits after 15 or so are what the addend of 0.000000001 makes of them.
TEST(PrintUsingTest, FractionDigitsComeOneByOne) {
    EXPECT_EQ(format("#.##########", 0.3), "0.3000000000");
    EXPECT_EQ(format("#.###############", 0.29999999995), "0.300000000000000");
}

TEST(PrintUsingTest, HugeNumbersKeepAllDigits) {
    const std::string huge = format("#.#", 1e300);
    EXPECT_EQ(huge.size(), 304u);
    EXPECT_EQ(huge.substr(0, 18), "%10000000000000000");
    EXPECT_EQ(huge.substr(302), ".0");
    // Too large for its scaled value: it has no fraction to round.
    EXPECT_EQ(format("#.##########", 1e300).substr(0, 302), huge.substr(0, 302));
}

TEST(PrintUsingTest, TheLongestFieldsFit) {
    FieldText text;
    const double largest = std::numeric_limits<double>::max();
    const std::string decimals(253, '#');
    format_field(-largest, field_of(".," + decimals), text);
    // %, sign, 309 digits, 102 commas, point, 253 digits.
    EXPECT_EQ(text.size, 1u + 1 + 309 + 102 + 1 + 253);
    format_field(-1, field_of("+**" + std::string(251, '#') + "+"), text);
    EXPECT_EQ(text.size, 254u);
    format_field(0.1, field_of("." + decimals + "^"), text);
    EXPECT_LE(text.size, text.characters.size());
}

// The formatter's steps, with the C library's printing for the whole digits.
std::string expected_field(double v, const NumericField& field) {
    const char* sign = v < 0 ? "-" : field.leading_plus ? "+" : "";
    const double s = std::stod("1e" + std::to_string(field.digits_after));
    const double r = std::floor(std::fabs(v) * s + 0.5) / s;
    std::array<char, 400> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%.0f", std::floor(r));
    std::string body = buffer.data();
    if (field.comma)
        for (int at = static_cast<int>(body.size()) - 3; at > 0; at -= 3)
            body.insert(static_cast<std::size_t>(at), ",");
    if (field.point) body += ".";
    double fraction = r - std::floor(r);
    for (int i = 0; i < field.digits_after; i++) {
        const int digit = std::clamp(static_cast<int>(std::trunc(fraction * 10 + 0.000000001)), 0, 9);
        body += std::to_string(digit);
        fraction = fraction * 10 - digit;
    }
    const int width = field.digits_before + (field.point ? 1 : 0) + field.digits_after;
    const int padding =
        static_cast<int>(field.extra_width) - (field.dollar ? 1 : 0) - static_cast<int>(body.size()) + width;
    std::string text =
        padding < 0 ? "%" : std::string(static_cast<std::size_t>(padding), field.star_fill ? '*' : ' ');
    if (field.dollar) text += "$";
    if (!field.trailing_sign) text += sign;
    text += body;
    if (field.trailing_sign) text += v < 0 ? "-" : "+";
    return text;
}

TEST(PrintUsingTest, RandomFieldsFollowTheSteps) {
    RandomBits random(21);
    for (int i = 0; i < 100000; i++) {
        NumericField field{};
        field.digits_before = random.below(10);
        field.digits_after = random.below(9);
        field.point = field.digits_after != 0 || random.below(4) == 0;
        field.comma = random.below(3) == 0;
        field.leading_plus = random.below(3) == 0;
        field.trailing_sign = random.below(3) == 0;
        field.dollar = random.below(4) == 0;
        field.star_fill = !field.dollar && random.below(4) == 0;
        field.extra_width = field.dollar ? 1 : field.star_fill ? 2 : 0;
        const double v = random.between(-1, 1) * std::pow(10, random.below(12));
        FieldText text;
        format_field(v, field, text);
        ASSERT_EQ(std::string(text.view()), expected_field(v, field)) << v;
    }
}

}  // namespace
}  // namespace korvane
