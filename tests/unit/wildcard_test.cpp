#include "files/wildcard.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace korvane {
namespace {

TEST(Wildcard, PlainTextMatchesItselfWithoutRegardToCase) {
    EXPECT_TRUE(matches_wildcard("GAME.BAS", "game.bas"));
    EXPECT_TRUE(matches_wildcard("game.bas", "GAME.BAS"));
    EXPECT_FALSE(matches_wildcard("GAME.BAS", "GAME.BA"));
    EXPECT_FALSE(matches_wildcard("GAME.BA", "GAME.BAS"));
    EXPECT_TRUE(matches_wildcard("", ""));
    EXPECT_FALSE(matches_wildcard("", "A"));
    EXPECT_FALSE(matches_wildcard("A", ""));
}

TEST(Wildcard, OnlyAsciiLettersFold) {
    EXPECT_FALSE(matches_wildcard("[", "{"));
    EXPECT_FALSE(matches_wildcard("@", "`"));
    EXPECT_FALSE(matches_wildcard("\xC4", "\xE4"));
    EXPECT_TRUE(matches_wildcard("\xE4", "\xE4"));
}

TEST(Wildcard, QuestionMarkMatchesOneCharacterAndNeverTheEnd) {
    EXPECT_TRUE(matches_wildcard("A?C", "abc"));
    EXPECT_FALSE(matches_wildcard("A?C", "AC"));
    EXPECT_FALSE(matches_wildcard("A?", "A"));
    EXPECT_TRUE(matches_wildcard("???", "a.b"));
    EXPECT_FALSE(matches_wildcard("?", ""));
}

TEST(Wildcard, StarMatchesAnyRun) {
    EXPECT_TRUE(matches_wildcard("*", ""));
    EXPECT_TRUE(matches_wildcard("*", "README"));
    EXPECT_TRUE(matches_wildcard("*.BAS", "game.bas"));
    EXPECT_FALSE(matches_wildcard("*.BAS", "game.bas.old"));
    EXPECT_TRUE(matches_wildcard("*.BAS", "a.bas.bas"));
    EXPECT_TRUE(matches_wildcard("A*C", "AC"));
    EXPECT_TRUE(matches_wildcard("A*C", "ABCBC"));
    EXPECT_FALSE(matches_wildcard("A*C", "ABCB"));
    EXPECT_TRUE(matches_wildcard("*A*B*", "xxAyyBzz"));
    EXPECT_FALSE(matches_wildcard("*A*B*", "xxByyAzz"));
}

TEST(Wildcard, SeveralStarsActAsOne) {
    EXPECT_TRUE(matches_wildcard("**X", "X"));
    EXPECT_TRUE(matches_wildcard("**X", "ABX"));
    EXPECT_FALSE(matches_wildcard("**X", "XA"));
    EXPECT_TRUE(matches_wildcard("A**", "A"));
}

TEST(Wildcard, StarDotStarAtTheEndIsEveryName) {
    EXPECT_TRUE(matches_wildcard("*.*", "README"));
    EXPECT_TRUE(matches_wildcard("*.*", "a.b"));
    EXPECT_TRUE(matches_wildcard("*.*", ""));
    EXPECT_TRUE(matches_wildcard("R*.*", "README"));
    EXPECT_TRUE(matches_wildcard("**.*", "README"));
    EXPECT_TRUE(matches_wildcard("?*.*", "R"));
    EXPECT_FALSE(matches_wildcard("?*.*", ""));
}

TEST(Wildcard, StarDotElsewhereNeedsADot) {
    EXPECT_FALSE(matches_wildcard("*.", "README"));
    EXPECT_TRUE(matches_wildcard("*.", "README."));
    EXPECT_FALSE(matches_wildcard("*.*S", "README"));
    EXPECT_TRUE(matches_wildcard("*.*S", "A.BAS"));
    // Only the last "*.*" is a lone "*"; the dot in front of it counts.
    EXPECT_FALSE(matches_wildcard("*.*.*", "README"));
    EXPECT_TRUE(matches_wildcard("*.*.*", "A.B"));
}

TEST(Wildcard, ManyStarsTakeNoExponentialTime) {
    std::string pattern;
    for (int i = 0; i < 100; ++i)
        pattern += "*A";
    const std::string name = std::string(255, 'A') + "B";
    EXPECT_FALSE(matches_wildcard(pattern, name));
}

// The rules as they are told, tried in the slow way.
bool matches_slowly(std::string_view pattern, std::string_view name) {
    if (pattern.empty()) return name.empty();
    if (pattern[0] == '*') {
        while (pattern.starts_with("**"))
            pattern.remove_prefix(1);
        if (pattern.starts_with("*.*") && pattern.find_first_not_of('*', 2) == std::string_view::npos)
            return true;
        for (std::size_t i = 0; i <= name.size(); ++i)
            if (matches_slowly(pattern.substr(1), name.substr(i))) return true;
        return false;
    }
    if (name.empty()) return false;
    const bool same = pattern[0] == '?' || std::toupper(pattern[0]) == std::toupper(name[0]);
    return same && matches_slowly(pattern.substr(1), name.substr(1));
}

TEST(Wildcard, AgreesWithTheSlowWayOnShortNames) {
    std::mt19937 random(1);
    const auto text = [&](std::string_view letters, std::size_t longest) {
        std::string made(random() % (longest + 1), ' ');
        for (char& letter : made)
            letter = letters[random() % letters.size()];
        return made;
    };
    int matches = 0;
    for (int i = 0; i < 200000; ++i) {
        const std::string pattern = text("aB.*?*", 7);
        const std::string name = text("Ab.", 6);
        const bool expected = matches_slowly(pattern, name);
        matches += expected ? 1 : 0;
        ASSERT_EQ(matches_wildcard(pattern, name), expected) << pattern << " " << name;
    }
    EXPECT_GT(matches, 10000);
}

}  // namespace
}  // namespace korvane
