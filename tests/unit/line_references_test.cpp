#include "core/line_references.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>

namespace korvane {
namespace {

// A program whose lines 1 to 9 become 100 to 900, and line 0 becomes 5; other numbers name no line.
std::uint32_t hundredfold(std::uint32_t line, const void*) {
    if (line == 0) return 5;
    return line < 10 ? line * 100 : line;
}

std::string rewritten(std::string_view text) {
    std::array<std::uint8_t, 1024> buffer;
    std::uint32_t length = 0;
    EXPECT_EQ(rewrite_line_references(text, hundredfold, nullptr, buffer, length), Rewriting::done);
    return {reinterpret_cast<const char*>(buffer.data()), length};
}

TEST(LineReferences, GotoAndGosubTakeAList) {
    EXPECT_EQ(rewritten("GOTO 7"), "GOTO 700");
    EXPECT_EQ(rewritten("GOSUB 7:PRINT 7"), "GOSUB 700:PRINT 7");
    EXPECT_EQ(rewritten("ON X GOTO 1,2, 3 ,4"), "ON X GOTO 100,200, 300 ,400");
    EXPECT_EQ(rewritten("ON X GOSUB 1,Y,2"), "ON X GOSUB 100,Y,2");
    EXPECT_EQ(rewritten("ON TIMER(2) GOSUB 8"), "ON TIMER(2) GOSUB 800");
}

TEST(LineReferences, BlanksAndTabsAreKept) {
    EXPECT_EQ(rewritten("GOTO \t 7 \t, \t8"), "GOTO \t 700 \t, \t800");
    EXPECT_EQ(rewritten("THEN  7  "), "THEN  700  ");
}

TEST(LineReferences, OneNumberAfterThenElseAndRestore) {
    EXPECT_EQ(rewritten("IF A=7 THEN 7 ELSE 8"), "IF A=7 THEN 700 ELSE 800");
    EXPECT_EQ(rewritten("THEN 7,8"), "THEN 700,8");
    EXPECT_EQ(rewritten("RESTORE 3,4"), "RESTORE 300,4");
    EXPECT_EQ(rewritten("IF A THEN GOTO 4"), "IF A THEN GOTO 400");
    EXPECT_EQ(rewritten("IF A THEN PRINT 4"), "IF A THEN PRINT 4");
}

TEST(LineReferences, ResumeKeepsItsZero) {
    EXPECT_EQ(rewritten("RESUME 0"), "RESUME 0");
    EXPECT_EQ(rewritten("RESUME 3"), "RESUME 300");
    EXPECT_EQ(rewritten("RESUME NEXT"), "RESUME NEXT");
    EXPECT_EQ(rewritten("RESUME"), "RESUME");
}

TEST(LineReferences, TrapsSwitchedOffStayOff) {
    EXPECT_EQ(rewritten("ON ERROR GOTO 0"), "ON ERROR GOTO 0");
    EXPECT_EQ(rewritten("ON BREAK  GOTO 0"), "ON BREAK  GOTO 0");
    EXPECT_EQ(rewritten("ON ERROR GOTO 3"), "ON ERROR GOTO 300");
    EXPECT_EQ(rewritten("GOTO 0"), "GOTO 5");
    EXPECT_EQ(rewritten("ERROR 2:GOTO 0"), "ERROR 2:GOTO 5");
}

TEST(LineReferences, ErlComparedWithANumber) {
    EXPECT_EQ(rewritten("IF ERL=3 THEN 4"), "IF ERL=300 THEN 400");
    EXPECT_EQ(rewritten("ERL<>3"), "ERL<>300");
    EXPECT_EQ(rewritten("ERL >= 3"), "ERL >= 300");
    EXPECT_EQ(rewritten("ERL< 3 OR ERL >9"), "ERL< 300 OR ERL >900");
    EXPECT_EQ(rewritten("3=ERL"), "3=ERL");
    EXPECT_EQ(rewritten("ERL+3"), "ERL+3");
    EXPECT_EQ(rewritten("ERL%=3"), "ERL%=3");
}

TEST(LineReferences, WordsAreWholeAndOfAnyCase) {
    EXPECT_EQ(rewritten("goto 7"), "goto 700");
    EXPECT_EQ(rewritten("GoSub 7"), "GoSub 700");
    EXPECT_EQ(rewritten("GOTOX 7"), "GOTOX 7");
    EXPECT_EQ(rewritten("XGOTO 7"), "XGOTO 7");
    EXPECT_EQ(rewritten("GOTO7"), "GOTO7");
    EXPECT_EQ(rewritten("GOTO2 7"), "GOTO2 7");
}

TEST(LineReferences, StringsAndRemarksAreCopied) {
    EXPECT_EQ(rewritten("PRINT \"GOTO 7\":GOTO 7"), "PRINT \"GOTO 7\":GOTO 700");
    EXPECT_EQ(rewritten("PRINT \"GOTO 7"), "PRINT \"GOTO 7");
    EXPECT_EQ(rewritten("GOTO 7 REM GOTO 7"), "GOTO 700 REM GOTO 7");
    EXPECT_EQ(rewritten("rem GOTO 7"), "rem GOTO 7");
    EXPECT_EQ(rewritten("GOTO 7 'GOTO 7"), "GOTO 700 'GOTO 7");
    EXPECT_EQ(rewritten("REMARK=1:GOTO 7"), "REMARK=1:GOTO 700");
}

TEST(LineReferences, NumbersThatNameNoLineStayAsWritten) {
    EXPECT_EQ(rewritten("GOTO 0010"), "GOTO 0010");
    EXPECT_EQ(rewritten("GOTO 007"), "GOTO 700");
    EXPECT_EQ(rewritten("GOTO 4294967295"), "GOTO 4294967295");
    EXPECT_EQ(rewritten("GOTO 99999999999999999999999999"), "GOTO 99999999999999999999999999");
    EXPECT_EQ(rewritten("GOTO 18446744073709551623"), "GOTO 18446744073709551623");
}

TEST(LineReferences, DecimalsAreNoLineNumbers) {
    EXPECT_EQ(rewritten("GOTO 7.5"), "GOTO 7.5");
    EXPECT_EQ(rewritten("GOTO 7E2"), "GOTO 7E2");
    EXPECT_EQ(rewritten("GOTO 7D+2"), "GOTO 7D+2");
    EXPECT_EQ(rewritten("GOTO 7ELSE 8"), "GOTO 700ELSE 800");
}

TEST(LineReferences, TheLengthLimitIs244) {
    std::array<std::uint8_t, 1024> buffer;
    std::uint32_t length = 0;
    // "GOTO 7" grows by two characters.
    const std::string fits = "GOTO 7:" + std::string(244 - 9, 'A');
    EXPECT_EQ(rewrite_line_references(fits, hundredfold, nullptr, buffer, length), Rewriting::done);
    EXPECT_EQ(length, 244U);
    EXPECT_EQ(rewrite_line_references(fits + "A", hundredfold, nullptr, buffer, length),
              Rewriting::text_too_long);
}

// With every line keeping its number any text comes out as it went in.
TEST(LineReferences, NothingIsLostFromRandomText) {
    constexpr std::array<std::string_view, 16> pieces{
        "GOTO", "GOSUB", "THEN", "ELSE", "ERL", "RESUME", "REM",  "\"",
        "'",    " ",     ",",    "10",   "<>",  "=",      "1.5E", "x%",
    };
    std::mt19937 random(20261120);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        const auto count = random() % 30;
        for (std::uint32_t i = 0; i < count; ++i)
            text += pieces[random() % pieces.size()];
        if (random() % 4 == 0) text += static_cast<char>(random());
        text.resize(std::min<std::size_t>(text.size(), 244));
        std::array<std::uint8_t, 244> buffer;
        std::uint32_t length = 0;
        const auto same = [](std::uint32_t line, const void*) { return line; };
        ASSERT_EQ(rewrite_line_references(text, same, nullptr, buffer, length), Rewriting::done);
        ASSERT_EQ(std::string_view(reinterpret_cast<const char*>(buffer.data()), length), text);
    }
}

TEST(LineReferences, TheBufferIsNotOverrun) {
    std::array<std::uint8_t, 8> buffer;
    std::uint32_t length = 0;
    EXPECT_EQ(rewrite_line_references("GOTO 7", hundredfold, nullptr, buffer, length), Rewriting::done);
    EXPECT_EQ(length, 8U);
    EXPECT_EQ(rewrite_line_references("GOTO 7:", hundredfold, nullptr, buffer, length),
              Rewriting::out_of_space);
}

}  // namespace
}  // namespace korvane
