#include "terminal_look.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "code_page.h"

namespace korvane::host {
namespace {

constexpr std::uint32_t black = 0x000000;
constexpr std::uint32_t white = 0xFFFFFF;

// What the environment means that holds these variables, and of those that matter no others.
TerminalLook look_of(const std::map<std::string, std::string>& variables) {
    for (const char* name : {"TERM", "COLORTERM", "NO_COLOR", "LC_ALL", "LC_CTYPE", "LANG"})
        unsetenv(name);
    for (const auto& [name, value] : variables)
        setenv(name.c_str(), value.c_str(), 1);
    return look_of_environment();
}

std::string colour_sequence(std::uint32_t colour, Colours colours, bool is_paper = false) {
    std::string bytes;
    const TerminalLook look = {colours, true};
    append_colour(bytes, is_paper, shown_cell({U'A', colour, colour, true}, look).ink, look);
    return bytes;
}

TEST(TerminalLook, TermAndColortermTellTheColours) {
    EXPECT_EQ(look_of({{"TERM", "xterm-256color"}, {"COLORTERM", "truecolor"}}).colours, Colours::all);
    EXPECT_EQ(look_of({{"TERM", "tmux-256color"}, {"COLORTERM", "24bit"}}).colours, Colours::all);
    EXPECT_EQ(look_of({{"TERM", "xterm-direct"}}).colours, Colours::all);
    EXPECT_EQ(look_of({{"TERM", "xterm-kitty"}}).colours, Colours::all);
    EXPECT_EQ(look_of({{"TERM", "xterm-256color"}}).colours, Colours::many);
    EXPECT_EQ(look_of({{"TERM", "screen-256color"}, {"COLORTERM", "yes"}}).colours, Colours::many);
    EXPECT_EQ(look_of({{"TERM", "xterm"}}).colours, Colours::sixteen);
    EXPECT_EQ(look_of({{"TERM", "linux"}}).colours, Colours::sixteen);
    EXPECT_EQ(look_of({}).colours, Colours::sixteen);
    EXPECT_EQ(look_of({{"TERM", "vt100"}}).colours, Colours::none);
    EXPECT_EQ(look_of({{"TERM", "xterm-mono"}, {"COLORTERM", "truecolor"}}).colours, Colours::none);
}

TEST(TerminalLook, NoColorIsObeyedUnlessItIsEmpty) {
    EXPECT_EQ(look_of({{"COLORTERM", "truecolor"}, {"NO_COLOR", "1"}}).colours, Colours::none);
    EXPECT_EQ(look_of({{"COLORTERM", "truecolor"}, {"NO_COLOR", ""}}).colours, Colours::all);
}

TEST(TerminalLook, LocaleTellsTheCharacters) {
    EXPECT_TRUE(look_of({}).has_unicode);
    EXPECT_TRUE(look_of({{"LANG", "de_DE.UTF-8"}}).has_unicode);
    EXPECT_TRUE(look_of({{"LANG", "C.utf8"}}).has_unicode);
    EXPECT_FALSE(look_of({{"LANG", "C"}}).has_unicode);
    EXPECT_FALSE(look_of({{"LANG", "de_DE.ISO-8859-1"}}).has_unicode);
    EXPECT_FALSE(look_of({{"LC_ALL", "POSIX"}, {"LANG", "de_DE.UTF-8"}}).has_unicode);
    EXPECT_TRUE(look_of({{"LC_CTYPE", "en_US.UTF-8"}, {"LANG", "C"}}).has_unicode);
    EXPECT_FALSE(look_of({{"LC_ALL", ""}, {"LANG", "C"}}).has_unicode);
}

TEST(TerminalLook, ColoursOfEachKind) {
    EXPECT_EQ(colour_sequence(0x123456, Colours::all), "\x1b[38;2;18;52;86m");
    EXPECT_EQ(colour_sequence(0x123456, Colours::all, true), "\x1b[48;2;18;52;86m");
    // The cube's corner 5,0,0; its step 2,1,0 at 135,95,0; the grey 128 is nearer than any of its greys.
    EXPECT_EQ(colour_sequence(0xFF0000, Colours::many), "\x1b[38;5;196m");
    EXPECT_EQ(colour_sequence(0x885E02, Colours::many), "\x1b[38;5;94m");
    EXPECT_EQ(colour_sequence(0x808080, Colours::many), "\x1b[38;5;244m");
    EXPECT_EQ(colour_sequence(black, Colours::many), "\x1b[38;5;16m");
    EXPECT_EQ(colour_sequence(white, Colours::many, true), "\x1b[48;5;231m");
    EXPECT_EQ(colour_sequence(0xFF5050, Colours::sixteen), "\x1b[91m");
    EXPECT_EQ(colour_sequence(0x0000A0, Colours::sixteen, true), "\x1b[44m");
    EXPECT_EQ(colour_sequence(white, Colours::sixteen, true), "\x1b[107m");
}

TEST(TerminalLook, EveryColourOfTheCubeAndTheGreysIsItsOwnNearest) {
    for (std::uint32_t red = 0; red < 6; ++red) {
        const std::uint32_t value = red == 0 ? 0 : 55 + 40 * red;
        EXPECT_EQ(colour_sequence(value << 16 | 0x00FF00, Colours::many),
                  "\x1b[38;5;" + std::to_string(16 + 36 * red + 30) + "m");
    }
    EXPECT_EQ(colour_sequence(0x080808, Colours::many), "\x1b[38;5;232m");
    EXPECT_EQ(colour_sequence(0xEEEEEE, Colours::many), "\x1b[38;5;255m");
}

TEST(TerminalLook, TextStaysReadableWithSixteenColours) {
    const Cell cell = shown_cell({U'A', 0x202020, 0x101010, true}, {Colours::sixteen, true});
    EXPECT_NE(cell.ink, cell.paper);
    const Cell light = shown_cell({U'A', 0xF8F8F8, white, true}, {Colours::sixteen, true});
    EXPECT_NE(light.ink, light.paper);
}

TEST(TerminalLook, WithoutColoursShapesRemain) {
    const TerminalLook look = {Colours::none, true};
    EXPECT_EQ(shown_cell({U'A', white, black, true}, look).character, U'A');
    EXPECT_EQ(shown_cell({U'A', black, white, true}, look).character, U'A');
    EXPECT_EQ(shown_cell({U'▀', 0xFF0000, black, false}, look).character, U'▀');
    EXPECT_EQ(shown_cell({U'▀', black, white, false}, look).character, U'▄');
    EXPECT_EQ(shown_cell({U'▀', white, white, false}, look).character, U'█');
    EXPECT_EQ(shown_cell({U'▀', black, 0x101010, false}, look).character, U' ');
    EXPECT_EQ(shown_cell({U'▀', 0x0000FF, black, false}, look).character, U'▀');
}

TEST(TerminalLook, WithoutColoursBrightPaperIsReversed) {
    const TerminalLook look = {Colours::none, true};
    const auto sequence = [&](const Cell& cell) {
        std::string bytes;
        const Cell shown = shown_cell(cell, look);
        append_colour(bytes, false, shown.ink, look);
        append_colour(bytes, true, shown.paper, look);
        return bytes;
    };
    EXPECT_EQ(sequence({U'A', white, black, true}), "\x1b[0m");
    EXPECT_EQ(sequence({U'A', black, white, true}), "\x1b[0;7m");
    EXPECT_EQ(sequence({U' ', white, white, true}), "\x1b[0;7m");
    EXPECT_EQ(sequence({U'▀', black, white, false}), "\x1b[0m");
}

TEST(TerminalLook, WithoutUnicodeEveryCharacterIsAscii) {
    const TerminalLook look = {Colours::all, false};
    for (int code = 0; code < 256; ++code) {
        const char32_t character = code_to_unicode(static_cast<std::uint8_t>(code));
        const char32_t shown = shown_cell({character, white, black, true}, look).character;
        EXPECT_GE(shown, U' ') << code;
        EXPECT_LT(shown, 127U) << code;
        // Only one character of the code page is like a question mark.
        EXPECT_EQ(shown == U'?', character == U'?' || character == U'¿') << code;
        EXPECT_EQ(shown == character, character < 127) << code;
    }
    EXPECT_EQ(shown_cell({U'│', white, black, true}, look).character, U'|');
    EXPECT_EQ(shown_cell({U'é', white, black, true}, look).character, U'e');
    EXPECT_EQ(shown_cell({U'█', white, black, true}, look).character, U'#');
    EXPECT_EQ(shown_cell({U'▀', white, white, false}, look).character, U' ');
    EXPECT_EQ(shown_cell({U'▀', white, black, false}, look).character, U'"');
}

}  // namespace
}  // namespace korvane::host
