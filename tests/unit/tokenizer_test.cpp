#include "program/tokenizer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "program/errors.h"
#include "program/keywords.h"
#include "raised_error.h"
#include "random_bits.h"

namespace korvane {
namespace {

using test::take_error;

// The tokens of a line without the end record.
// The text lives until the next call, as string tokens need it to.
std::span<const Token> tokens_of(std::string_view line) {
    static std::string text;
    text = line;
    errors.pending = false;
    const int count = tokenize(reinterpret_cast<const std::uint8_t*>(text.c_str()));
    EXPECT_GE(count, 1);
    EXPECT_LE(count, max_token_records);
    EXPECT_EQ(tokenizer.scratch[count - 1].kind, END_OF_LINE);
    return {tokenizer.scratch, static_cast<std::size_t>(count - 1)};
}

std::vector<int> kinds_of(std::string_view line) {
    std::vector<int> kinds;
    for (const Token& token : tokens_of(line))
        kinds.push_back(token.kind);
    return kinds;
}

std::string name_of(const Token& token) {
    EXPECT_EQ(token.kind, IDENTIFIER);
    EXPECT_LT(std::strlen(token.name), sizeof token.name);
    return token.name;
}

std::string text_of(const Token& token) {
    EXPECT_EQ(token.kind, STRING_LITERAL);
    return {reinterpret_cast<const char*>(token.string.bytes), token.string.length};
}

struct Keyword {
    const char* name;
    int code;
};

constexpr Keyword keywords[] = {
    {"MOD", 0x10},       {"DEFINT", 0x11},    {"DEFLNG", 0x12}, {"DEFI64", 0x13},    {"DEFSNG", 0x14},
    {"DEFDBL", 0x15},    {"DEFSTR", 0x16},    {"END", 0x81},    {"FOR", 0x82},       {"NEXT", 0x83},
    {"DATA", 0x84},      {"INPUT", 0x85},     {"DIM", 0x86},    {"READ", 0x87},      {"LET", 0x88},
    {"GOTO", 0x89},      {"RUN", 0x8A},       {"IF", 0x8B},     {"RESTORE", 0x8C},   {"GOSUB", 0x8D},
    {"RETURN", 0x8E},    {"REM", 0x8F},       {"STOP", 0x90},   {"PRINT", 0x91},     {"CLEAR", 0x92},
    {"LIST", 0x93},      {"NEW", 0x94},       {"AND", 0x95},    {"OR", 0x96},        {"NOT", 0x97},
    {"XOR", 0x98},       {"EQV", 0x99},       {"IMP", 0x9A},    {"RANDOMIZE", 0x9B}, {"SWAP", 0x9C},
    {"PSET", 0x9D},      {"PRESET", 0x9E},    {"LINE", 0x9F},   {"ELSE", 0xA1},      {"CIRCLE", 0xA2},
    {"PAINT", 0xA3},     {"GET", 0xA4},       {"PUT", 0xA5},    {"SCREEN", 0xA6},    {"CLS", 0xA7},
    {"COLOR", 0xA8},     {"LOCATE", 0xA9},    {"OPEN", 0xAA},   {"CLOSE", 0xAB},     {"AS", 0xAC},
    {"OUTPUT", 0xAD},    {"APPEND", 0xAE},    {"KILL", 0xAF},   {"WHILE", 0xB1},     {"WEND", 0xB2},
    {"FILES", 0xB3},     {"LOAD", 0xB4},      {"SAVE", 0xB5},   {"WRITE", 0xB6},     {"USING", 0xB7},
    {"ON", 0xB8},        {"DEF", 0xBB},       {"EDIT", 0xBC},   {"LOADBMP", 0xBD},   {"BITBLT", 0xBE},
    {"TXTWINDOW", 0xBF}, {"ERROR", 0xC0},     {"BREAK", 0xC1},  {"RESUME", 0xC2},    {"AUTO", 0xC3},
    {"POKE", 0xC4},      {"RENUM", 0xC5},     {"CHDIR", 0xC6},  {"MKDIR", 0xC7},     {"RMDIR", 0xC8},
    {"TO", 0xC9},        {"STEP", 0xCD},      {"THEN", 0xCF},   {"OPTION", 0xD0},    {"BASE", 0xD1},
    {"ERASE", 0xD2},     {"NAME", 0xD3},      {"MERGE", 0xD4},  {"DELETE", 0xD5},    {"TRON", 0xD6},
    {"TROFF", 0xD7},     {"WINDOW", 0xD8},    {"LSET", 0xD9},   {"RSET", 0xDA},      {"FIELD", 0xDB},
    {"VIEW", 0xDC},      {"DRAW", 0xDD},      {"CONT", 0xDE},   {"BLOAD", 0xDF},     {"BSAVE", 0xE0},
    {"CHAIN", 0xE1},     {"HELP", 0xE2},      {"COMMON", 0xE3}, {"TRACE", 0xE4},     {"VARINFO", 0xE5},
    {"ARRAYINFO", 0xE6}, {"KORVANE", 0xE7},   {"POKE16", 0xE8}, {"POKE32", 0xE9},    {"POKE64", 0xEA},
    {"DIR", 0xEB},       {"CREATEEFI", 0xEC},
};
static_assert(std::size(keywords) == 107);

TEST(TokenizerTest, KeywordsHaveTheirCodesInAnyCase) {
    for (const Keyword& keyword : keywords) {
        EXPECT_EQ(kinds_of(keyword.name), std::vector{keyword.code}) << keyword.name;
        std::string lower = keyword.name;
        for (char& c : lower)
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
        EXPECT_EQ(kinds_of(lower), std::vector{keyword.code}) << lower;
        EXPECT_EQ(take_error(), "");
    }
}

TEST(TokenizerTest, KeywordsAreWholeWords) {
    for (const Keyword& keyword : keywords) {
        const std::string name = keyword.name;
        EXPECT_EQ(name_of(tokens_of(name + "X")[0]), name + "X");
        EXPECT_EQ(name_of(tokens_of("Q" + name)[0]), "Q" + name);
        EXPECT_EQ(name_of(tokens_of(name + "9")[0]), name + "9");
        const std::string begun = name.substr(0, name.size() - 1);
        if (find_keyword(begun) != 0) continue;
        EXPECT_EQ(name_of(tokens_of(begun)[0]), begun);
    }
}

TEST(TokenizerTest, PunctuationIsItsOwnCode) {
    for (const char mark : std::string_view("#()*+,-./:;<=>@\\^"))
        EXPECT_EQ(kinds_of(std::string(1, mark)), std::vector<int>{mark}) << mark;
    EXPECT_EQ(kinds_of("<=>=<>"), (std::vector<int>{'<', '=', '>', '=', '<', '>'}));
    EXPECT_EQ(kinds_of("?"), std::vector<int>{KW_PRINT});
    EXPECT_EQ(kinds_of("'any !thing"), std::vector<int>{KW_REM});
    EXPECT_EQ(take_error(), "");
}

TEST(TokenizerTest, OtherCharactersBeginNoToken) {
    for (int code = 1; code < 256; ++code) {
        const char c = static_cast<char>(code);
        if (c == ' ' || c == '\t' || c == '"' || c == '?' || c == '\'') continue;
        if (std::string_view("#()*+,-./:;<=>@\\^").find(c) != std::string_view::npos) continue;
        if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) continue;
        EXPECT_TRUE(tokens_of(std::string(1, c)).empty()) << code;
        EXPECT_EQ(take_error(), "Syntax Error") << code;
    }
}

TEST(TokenizerTest, TokensBeforeAFaultAreKept) {
    EXPECT_EQ(kinds_of("PRINT A {"), (std::vector<int>{KW_PRINT, IDENTIFIER}));
    EXPECT_EQ(take_error(), "Syntax Error");
}

TEST(TokenizerTest, StringsPointIntoTheLine) {
    const auto tokens = tokens_of("\"one\" \"\" \"a'b:c\"");
    ASSERT_EQ(tokens.size(), 3U);
    EXPECT_EQ(text_of(tokens[0]), "one");
    EXPECT_EQ(text_of(tokens[1]), "");
    EXPECT_EQ(text_of(tokens[2]), "a'b:c");
    EXPECT_EQ(tokens[2].string.bytes - tokens[0].string.bytes, 9);
}

TEST(TokenizerTest, AClosingQuoteMayOnlyBeMissingDirectlyAfterLoad) {
    EXPECT_EQ(text_of(tokens_of("LOAD \"A:REM B")[1]), "A:REM B");
    EXPECT_EQ(take_error(), "");
    tokens_of("LOAD,\"A");
    EXPECT_EQ(take_error(), "Unterminated string");
    tokens_of("\"A");
    EXPECT_EQ(take_error(), "Unterminated string");
    tokens_of("\"");
    EXPECT_EQ(take_error(), "Unterminated string");
}

TEST(TokenizerTest, NamesAreFoldedCutAndSuffixed) {
    EXPECT_EQ(name_of(tokens_of("abc1")[0]), "ABC1");
    for (const char* suffix : {"%", "!", "#", "$", "&", "&&"}) {
        const auto tokens = tokens_of("name" + std::string(suffix));
        // NAME is a keyword, which takes no suffix.
        EXPECT_EQ(tokens[0].kind, KW_NAME);
        EXPECT_EQ(name_of(tokens_of("nam" + std::string(suffix))[0]), "NAM" + std::string(suffix));
        EXPECT_EQ(name_of(tokens_of(std::string(50, 'q') + suffix)[0]), std::string(37, 'Q') + suffix);
        take_error();
    }
    EXPECT_EQ(name_of(tokens_of(std::string(37, 'q'))[0]), std::string(37, 'Q'));
    EXPECT_EQ(kinds_of("A&&B"), (std::vector<int>{IDENTIFIER, IDENTIFIER}));
    EXPECT_EQ(name_of(tokens_of("INPUT$(1)")[0]), "INPUT$");
    EXPECT_EQ(kinds_of("INPUT A$"), (std::vector<int>{KW_INPUT, IDENTIFIER}));
}

TEST(TokenizerTest, ANameFollowedByAHexadecimalLooksLikeOneWithASuffix) {
    // "&" belongs to the name in front of it.
    EXPECT_EQ(name_of(tokens_of("A&HFF")[0]), "A&");
    EXPECT_EQ(kinds_of("A &HFF"), (std::vector<int>{IDENTIFIER, NUMBER}));
}

TEST(TokenizerTest, NumbersHoldTypeAndValue) {
    const auto tokens = tokens_of("7 40000 .5 &H1F 9&& 1D0");
    ASSERT_EQ(tokens.size(), 6U);
    EXPECT_EQ(tokens[0].value_type, Type::INTEGER);
    EXPECT_EQ(tokens[0].number.integer, 7);
    EXPECT_EQ(tokens[1].value_type, Type::SINGLE);
    EXPECT_EQ(tokens[1].number.real, 40000.0);
    EXPECT_EQ(tokens[2].value_type, Type::SINGLE);
    EXPECT_EQ(tokens[2].number.real, 0.5);
    EXPECT_EQ(tokens[3].value_type, Type::INTEGER);
    EXPECT_EQ(tokens[3].number.integer, 31);
    EXPECT_EQ(tokens[4].value_type, Type::INT64);
    EXPECT_EQ(tokens[4].number.integer, 9);
    EXPECT_EQ(tokens[5].value_type, Type::DOUBLE);
    EXPECT_EQ(tokens[5].number.real, 1.0);
}

TEST(TokenizerTest, TheTokenLimit) {
    EXPECT_EQ(tokens_of(std::string(127, ':')).size(), 127U);
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(tokens_of(std::string(127, ':') + " \t ").size(), 127U);
    EXPECT_EQ(take_error(), "");
    EXPECT_EQ(tokens_of(std::string(128, ':')).size(), 127U);
    EXPECT_EQ(take_error(), "Too many tokens");
    EXPECT_EQ(tokens_of(std::string(127, ':') + "{").size(), 127U);
    EXPECT_EQ(take_error(), "Too many tokens");
    EXPECT_EQ(tokens_of(std::string(126, ':') + "REM {").size(), 127U);
    EXPECT_EQ(take_error(), "");
}

TEST(TokenizerTest, AnEmptyLineIsOnlyItsEnd) {
    EXPECT_TRUE(tokens_of("").empty());
    EXPECT_TRUE(tokens_of(" \t  \t").empty());
    EXPECT_EQ(take_error(), "");
}

TEST(TokenizerTest, TheLookupCacheIsEmpty) {
    for (const Token& token : tokens_of("PRINT A+1,\"X\""))
        EXPECT_EQ(token.cached, nullptr);
}

TEST(TokenizerTest, AnyBytesGiveTokensAndAnEnd) {
    test::RandomBits random(1);
    for (int round = 0; round < 20000; ++round) {
        std::string line;
        for (int length = random.below(256); length > 0; --length)
            line += static_cast<char>(random.below(3) == 0 ? 1 + random.below(255) : 32 + random.below(64));
        const auto tokens = tokens_of(line);
        const std::string error = take_error();
        EXPECT_TRUE(error.empty() || error == "Syntax Error" || error == "Unterminated string" ||
                    error == "Too many tokens" || error == "Overflow")
            << error;
        for (const Token& token : tokens)
            EXPECT_NE(token.kind, END_OF_LINE);
    }
}

}  // namespace
}  // namespace korvane
