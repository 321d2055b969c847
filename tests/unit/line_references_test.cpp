#include "program/line_references.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "program/keywords.h"
#include "program/tokenizer.h"
#include "raised_error.h"

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

TEST(LineReferences, KeywordsJoinedToLiterals) {
    EXPECT_EQ(rewritten("IF X=1E1GOTO 6"), "IF X=1E1GOTO 600");
    EXPECT_EQ(rewritten("IF X=&HATHEN 8"), "IF X=&HATHEN 800");
    EXPECT_EQ(rewritten("IF X=&HA%THEN 8"), "IF X=&HA%THEN 800");
    EXPECT_EQ(rewritten("IF X=1#THEN 8ELSE 7"), "IF X=1#THEN 800ELSE 700");
    EXPECT_EQ(rewritten("X=1E1REM GOTO 7"), "X=1E1REM GOTO 7");
    EXPECT_EQ(rewritten("X=&HFELSE 7"), "X=&HFELSE 7");
    EXPECT_EQ(rewritten("X=A&HTHEN 7"), "X=A&HTHEN 7");
    EXPECT_EQ(rewritten("X=1EGOTO 7"), "X=1EGOTO 7");
    // A literal that cannot be read ends where the tokenizer would look on if it could.
    EXPECT_EQ(rewritten("X=1E999GOTO 7"), "X=1E999GOTO 700");
    EXPECT_EQ(rewritten("X=&HGOTO 7"), "X=&HGOTO 700");
    EXPECT_EQ(rewritten("X=&H11111111111111111GOTO 7"), "X=&H11111111111111111GOTO 700");
}

// What the tokens of a rewritten line must be: those of the line with other numbers where a reference stands.
// Decimal integers are the only numbers below 10 in the lines that are tried.
std::vector<Token> with_references_rewritten(std::vector<Token> tokens) {
    const auto rewrite = [&](std::size_t at) {
        Token& token = tokens[at];
        if (token.kind != NUMBER) return false;
        if (token.value_type <= Type::INT64 && token.number.integer >= 0 && token.number.integer < 10)
            token.number.integer = hundredfold(static_cast<std::uint32_t>(token.number.integer), nullptr);
        return true;
    };
    for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
        const std::uint8_t kind = tokens[at].kind;
        if (kind == KW_THEN || kind == KW_ELSE || kind == KW_RESTORE) rewrite(at + 1);
        if (kind == KW_RESUME && tokens[at + 1].number.integer != 0) rewrite(at + 1);
        if (kind == KW_GOTO || kind == KW_GOSUB) {
            std::size_t number = at + 1;
            while (rewrite(number) && tokens[number + 1].kind == ',')
                number += 2;
        }
        if (kind == IDENTIFIER && std::string_view(tokens[at].name) == "ERL") {
            const auto is_relation = [&](std::size_t place) {
                return tokens[place].kind == '<' || tokens[place].kind == '=' || tokens[place].kind == '>';
            };
            if (!is_relation(at + 1)) continue;
            rewrite(is_relation(at + 2) ? at + 3 : at + 2);
        }
    }
    return tokens;
}

std::vector<Token> tokens_of(const std::string& text) {
    const int count = tokenize(reinterpret_cast<const std::uint8_t*>(text.c_str()));
    return {tokenizer.scratch, tokenizer.scratch + count};
}

std::string described(const Token& token) {
    std::string text = std::to_string(token.kind);
    if (token.kind == NUMBER) text += " " + std::to_string(token.number.integer);
    if (token.kind == IDENTIFIER) text += " " + std::string(token.name);
    if (token.kind == STRING_LITERAL) text += " " + std::to_string(token.string.length);
    return text;
}

// Pieces of lines with and without blanks between them: whatever they make together, the tokens of the
// rewritten line must be those of the line but for the references.
TEST(LineReferences, StandWhereTheTokenizerSeesThem) {
    constexpr std::array<std::string_view, 36> pieces{
        "GOTO", "GOSUB", "THEN",  "ELSE", "RESTORE", "RESUME",     "ERL", "REM", "DATA",
        "END",  "IF",    "INPUT", "7",    "0",       "3",          "1E1", "&HA", "&O17",
        "7.5",  ".5D1",  "12%",   "&H1F", "1D+2",    "\"GOTO 7\"", "X",   "A&",  "B%",
        "C$",   "E",     "D",     "&",    ",",       ":",          "(",   "+",   "?",
    };
    constexpr std::array<std::string_view, 4> relations{"=", "<>", "<=", ">"};
    std::mt19937 random(20261121);
    const auto blank = [&] { return random() % 2 == 0 ? " " : ""; };
    int compared = 0;
    int changed = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string text;
        const auto count = 2 + random() % 8;
        for (std::uint32_t i = 0; i < count; ++i) {
            text.append(pieces[random() % pieces.size()]).append(blank());
            if (random() % 6 == 0)
                text.append("ERL").append(relations[random() % relations.size()]).append(blank());
        }
        const std::vector<Token> expected = with_references_rewritten(tokens_of(text));
        if (!test::take_error().empty()) continue;
        const std::string result = rewritten(text);
        const std::vector<Token> actual = tokens_of(result);
        // A number with a suffix may become too large for it.
        if (!test::take_error().empty()) continue;
        ASSERT_EQ(actual.size(), expected.size()) << text << "\n" << result;
        for (std::size_t i = 0; i < actual.size(); ++i)
            ASSERT_EQ(described(actual[i]), described(expected[i])) << text << "\n" << result;
        ++compared;
        changed += result != text ? 1 : 0;
    }
    EXPECT_GT(compared, 50000);
    EXPECT_GT(changed, 10000);
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
