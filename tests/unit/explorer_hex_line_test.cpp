#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "explorer/hex_line.h"
#include "explorer/line_text.h"
#include "explorer/text_decoder.h"

namespace korvane {
namespace {

TEST(HexLine, ShowsSixteenBytesWithAGapAfterTheEighth) {
    HexLine line{.address = 0x1000};
    for (unsigned i = 0; i < 16; ++i)
        line.bytes[i] = static_cast<std::uint8_t>(0x3A + i);
    EXPECT_EQ(format_hex_line(line).view(),
              "0000000000001000  3A 3B 3C 3D 3E 3F 40 41  42 43 44 45 46 47 48 49  :;<=>?@ABCDEFGHI");
}

TEST(HexLine, OnlyCodes32To126AreShownAsTheyAre) {
    HexLine line{.address = 0, .count = 6};
    line.bytes = {31, 32, 126, 127, 0, 255};
    const std::string text(format_hex_line(line).view());
    EXPECT_EQ(text.substr(text.size() - 6), ". ~...");
}

TEST(HexLine, ShortLineOfADiskHasBlanksForMissingBytes) {
    HexLine line{.address = 0xABCDEF0123456789};
    const std::vector<std::uint8_t> bytes = {0x41, 0x42, 0x43};
    line.take(bytes);
    EXPECT_EQ(format_hex_line(line).view(),
              "ABCDEF0123456789  41 42 43                                          ABC");
    // 16 digits, 2 blanks, 16 columns of 3, the gap and a blank come before the characters.
    EXPECT_EQ(format_hex_line(line).view().find("ABC", 20), 16u + 2 + 16 * 3 + 1 + 1);
}

TEST(HexLine, ShortLineOfMemoryHasQuestionMarksInTheColumnsOnly) {
    HexLine line{.address = 0, .count = 2, .absent = "??"};
    line.bytes = {0x41, 0x42};
    EXPECT_EQ(format_hex_line(line).view(),
              "0000000000000000  41 42 ?? ?? ?? ?? ?? ??  ?? ?? ?? ?? ?? ?? ?? ??  AB");
}

TEST(HexLine, UnreadBytesAreQuestionMarks) {
    HexLine line{.address = 0, .count = 3, .unread = 0b010, .absent = "??"};
    line.bytes = {0x41, 0x42, 0x43};
    EXPECT_EQ(format_hex_line(line).view(),
              "0000000000000000  41 ?? 43 ?? ?? ?? ?? ??  ?? ?? ?? ?? ?? ?? ?? ??  A?C");
}

TEST(LineText, TextBeyondTheCapacityIsDropped) {
    LineText line;
    line.put(std::string(LineText::capacity - 1, 'x')).put("yz");
    EXPECT_EQ(line.length(), LineText::capacity);
    EXPECT_EQ(line.view().back(), 'y');
    EXPECT_EQ(line.tab_to(10000).length(), LineText::capacity);
}

TEST(LineText, NumbersAreFormattedToTheirWidths) {
    EXPECT_EQ(LineText().put_decimal(18446744073709551615u).view(), "18446744073709551615");
    EXPECT_EQ(LineText().put_decimal(7, 4).view(), "   7");
    EXPECT_EQ(LineText().put_decimal(12345, 4).view(), "12345");
    EXPECT_EQ(LineText().put_signed(-9223372036854775807 - 1).view(), "-9223372036854775808");
    EXPECT_EQ(LineText().put_signed(5).view(), "5");
    EXPECT_EQ(LineText().put_hex(0xABC, 2).view(), "BC");
}

TEST(LineText, Utf16IsShownByItsLowByteWithoutLineEnds) {
    LineText line;
    for (const char16_t unit : {u'A', char16_t{0x0141}, char16_t{0x000D}, char16_t{0x0100}})
        line.put_utf16(unit);
    EXPECT_EQ(line.view(), "AA..");
}

std::string decode(std::vector<std::uint8_t> bytes) {
    TextDecoder decoder;
    std::string text;
    for (std::size_t i = decoder.begin(bytes); i < bytes.size(); ++i)
        if (const auto character = decoder.take(bytes[i])) text += static_cast<char>(*character);
    return text;
}

TEST(TextDecoder, EveryKindOfLineEndIsOne) {
    EXPECT_EQ(decode({'a', '\r', '\n', 'b', '\n', 'c', '\r', 'd', '\r', '\r', '\n', '\n'}),
              "a\rb\rc\rd\r\r\r");
}

TEST(TextDecoder, ControlCharactersBecomePoints) {
    EXPECT_EQ(decode({7, 0, 'x', 9, 26, 0xE1}), "..x\t.\xE1");
}

TEST(TextDecoder, ByteOrderMarksAreUnderstood) {
    EXPECT_EQ(decode({0xEF, 0xBB, 0xBF, 'a'}), "a");
    EXPECT_EQ(decode({0xFF, 0xFE, 'a', 0, '\r', 0, '\n', 0, 'b', 0, 'c'}), "a\rb");
    EXPECT_EQ(decode({0xFF}), "\xFF");
    EXPECT_EQ(decode({}), "");
}

}  // namespace
}  // namespace korvane
