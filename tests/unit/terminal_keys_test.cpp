#include "terminal_keys.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace korvane::host {
namespace {

// Keys as text: characters as they are, others as <scan:character>; pasted ones after a '+'.
std::string shown(TerminalKeys& keys) {
    std::string text;
    while (const auto key = keys.next()) {
        if (key->pasted) text += '+';
        const auto character = static_cast<unsigned>(key->key.UnicodeChar);
        if (key->key.ScanCode == 0 && character >= 32 && character < 127)
            text += static_cast<char>(character);
        else
            text += '<' + std::to_string(key->key.ScanCode) + ':' + std::to_string(character) + '>';
    }
    return text;
}

std::string decoded(std::string_view bytes) {
    TerminalKeys keys;
    keys.feed(bytes);
    return shown(keys);
}

TEST(TerminalKeys, CharactersAreTyped) {
    EXPECT_EQ(decoded("PRINT \"a~\""), "PRINT \"a~\"");
}

TEST(TerminalKeys, EnterComesFromReturnAndFromLineFeed) {
    EXPECT_EQ(decoded("\r"), "<0:13>");
    EXPECT_EQ(decoded("\n"), "<0:13>");
}

TEST(TerminalKeys, BothEraseBytesAreBackspace) {
    EXPECT_EQ(decoded("\x7f\b"), "<0:8><0:8>");
}

TEST(TerminalKeys, CursorKeysInBothForms) {
    EXPECT_EQ(decoded("\x1b[A\x1b[B\x1b[C\x1b[D"), "<1:0><2:0><3:0><4:0>");
    EXPECT_EQ(decoded("\x1bOA\x1bOB\x1bOC\x1bOD"), "<1:0><2:0><3:0><4:0>");
}

TEST(TerminalKeys, HomeEndInsertDeleteInAllForms) {
    EXPECT_EQ(decoded("\x1b[H\x1b[F\x1bOH\x1bOF"), "<5:0><6:0><5:0><6:0>");
    EXPECT_EQ(decoded("\x1b[1~\x1b[4~\x1b[7~\x1b[8~"), "<5:0><6:0><5:0><6:0>");
    EXPECT_EQ(decoded("\x1b[2~\x1b[3~"), "<7:0><8:0>");
}

TEST(TerminalKeys, PageAndFunctionKeys) {
    EXPECT_EQ(decoded("\x1b[5~\x1b[6~"), "<9:0><10:0>");
    EXPECT_EQ(decoded("\x1bOP\x1b[15~\x1b[24~"), "<11:0><15:0><22:0>");
}

TEST(TerminalKeys, ModifiersAreIgnored) {
    EXPECT_EQ(decoded("\x1b[1;5C\x1b[3;2~"), "<3:0><8:0>");
}

TEST(TerminalKeys, UnknownSequencesAreSwallowedWhole) {
    EXPECT_EQ(decoded("a\x1b[?62;4cb\x1b[99~c\x1b[Zd"), "abcd");
}

TEST(TerminalKeys, SequenceMayArriveInPieces) {
    TerminalKeys keys;
    keys.feed("\x1b");
    EXPECT_TRUE(keys.waits_for_escape());
    EXPECT_EQ(shown(keys), "");
    keys.feed("[");
    EXPECT_EQ(shown(keys), "");
    keys.feed("A");
    EXPECT_FALSE(keys.waits_for_escape());
    EXPECT_EQ(shown(keys), "<1:0>");
}

TEST(TerminalKeys, LoneEscapeIsTheEscapeKeyOnceNothingFollows) {
    TerminalKeys keys;
    keys.feed("\x1b");
    EXPECT_EQ(shown(keys), "");
    keys.flush();
    EXPECT_EQ(shown(keys), "<23:0>");
    EXPECT_FALSE(keys.waits_for_escape());
}

TEST(TerminalKeys, EscapeBeforeAnythingElseIsAKeyOfItsOwn) {
    EXPECT_EQ(decoded("\x1bx"), "<23:0>x");
    TerminalKeys keys;
    keys.feed("\x1b\x1b");
    keys.flush();
    EXPECT_EQ(shown(keys), "<23:0><23:0>");
}

TEST(TerminalKeys, FlushGivesABrokenSequenceUp) {
    TerminalKeys keys;
    keys.feed("\x1b[1;");
    keys.flush();
    EXPECT_EQ(shown(keys), "<23:0>[1;");
}

TEST(TerminalKeys, EndlessSequenceIsGivenUp) {
    const std::string noise(200, '1');
    EXPECT_EQ(decoded("\x1b[" + noise), "<23:0>[" + noise);
}

TEST(TerminalKeys, CharactersOfTheCodePageKeepTheirLook) {
    EXPECT_EQ(decoded("é"), "<0:130>");
    EXPECT_EQ(decoded("█"), "<0:219>");
    EXPECT_EQ(decoded("π"), "<0:227>");
}

TEST(TerminalKeys, OtherCharactersBecomeAQuestionMark) {
    EXPECT_EQ(decoded("a字b"), "a?b");
    EXPECT_EQ(decoded("a😀b"), "a?b");
}

TEST(TerminalKeys, MalformedBytesBecomeQuestionMarks) {
    EXPECT_EQ(decoded("a\xff"
                      "b\x80"),
              "a?b?");
    EXPECT_EQ(decoded("\xc3z"), "?z");
}

TEST(TerminalKeys, CharacterMayArriveInPieces) {
    TerminalKeys keys;
    keys.feed("\xc3");
    EXPECT_EQ(shown(keys), "");
    keys.feed("\xa9");
    EXPECT_EQ(shown(keys), "<0:130>");
}

TEST(TerminalKeys, PasteIsMarkedAndItsBracketsVanish) {
    EXPECT_EQ(decoded("a\x1b[200~bc\x1b[201~d"), "a+b+cd");
}

TEST(TerminalKeys, PastedLineEndsAreOneEnterEach) {
    EXPECT_EQ(decoded("\x1b[200~a\r\nb\nc\rd\x1b[201~"), "+a+<0:13>+b+<0:13>+c+<0:13>+d");
}

TEST(TerminalKeys, PastedTabIsABlankAndOtherControlsAreDropped) {
    EXPECT_EQ(decoded("\x1b[200~a\tb\x07\x08\x7f"
                      "c\x1b[201~"),
              "+a+ +b+c");
}

TEST(TerminalKeys, EscapeCannotBePasted) {
    EXPECT_EQ(decoded("\x1b[200~a\x1bxb\x1b[201~"), "+a+x+b");
}

TEST(TerminalKeys, NulIsNoKey) {
    EXPECT_EQ(decoded(std::string_view("a\0b", 3)), "ab");
}

}  // namespace
}  // namespace korvane::host
