#include <gtest/gtest.h>

#include <string>

#include "explorer/command_line.h"
#include "explorer/commands.h"

namespace korvane {
namespace {

TEST(CommandLine, CommandWordIsFoldedAndArgumentsFollow) {
    CommandLine line = split_command_line("  \tm lomem 10");
    EXPECT_EQ(line.command.view(), "M");
    EXPECT_EQ(line.arguments.next().view(), "LOMEM");
    EXPECT_EQ(line.arguments.next().view(), "10");
    EXPECT_TRUE(line.arguments.next().empty());
}

TEST(CommandLine, GreaterThanNeedsNoBlankBehindIt) {
    CommandLine line = split_command_line(" >1000 41 42");
    EXPECT_EQ(line.command.view(), ">");
    EXPECT_EQ(line.arguments.next().view(), "1000");
    EXPECT_EQ(line.arguments.next().view(), "41");
}

TEST(CommandLine, EmptyLineHasNoCommand) {
    EXPECT_TRUE(split_command_line("").command.empty());
    EXPECT_TRUE(split_command_line(" \t ").command.empty());
}

TEST(CommandLine, CommandWordIsCutAt47CharactersAndItsRestSkipped) {
    const std::string text = std::string(60, 'q') + " 12";
    CommandLine line = split_command_line(text);
    EXPECT_EQ(line.command.view(), std::string(47, 'Q'));
    EXPECT_EQ(line.arguments.next().view(), "12");
}

TEST(CommandLine, ArgumentWordIsCutAt63CharactersAndItsRestSkipped) {
    const std::string text = "M " + std::string(63, 'a') + "b 12";
    CommandLine line = split_command_line(text);
    EXPECT_EQ(line.arguments.next().view(), std::string(63, 'A'));
    EXPECT_EQ(line.arguments.next().view(), "12");
}

TEST(CommandLine, ByteWordIsCutAt31Characters) {
    WordReader reader(std::string_view("00000000000000000000000000000414 5"));
    EXPECT_EQ(reader.next(byte_word_length).view(), "0000000000000000000000000000041");
    EXPECT_EQ(reader.next(byte_word_length).view(), "5");
}

TEST(CommandLine, RestKeepsCaseAndInnerBlanks) {
    CommandLine line = split_command_line("A 1000   Hello,  World");
    line.arguments.next();
    EXPECT_EQ(line.arguments.rest(), "Hello,  World");
}

TEST(CommandLine, PromptIsNoPartOfTheCommand) {
    EXPECT_EQ(without_prompt("K> M 1000"), "M 1000");
    EXPECT_EQ(without_prompt("K> > 1000 41"), "> 1000 41");
    EXPECT_EQ(without_prompt("M 1000"), "M 1000");
    EXPECT_EQ(without_prompt("K>"), "");
    EXPECT_EQ(without_prompt("K> "), "");
    EXPECT_EQ(without_prompt("K>M"), "K>M");
}

TEST(CommandLine, CommandIsCutAt192Characters) {
    EXPECT_EQ(without_prompt("K> " + std::string(193, 'x')).size(), 192u);
    EXPECT_EQ(without_prompt(std::string(195, 'x')).size(), 192u);
}

TEST(CommandLine, PathMayBeQuotedAndHoldBlanks) {
    EXPECT_EQ(path_argument("\\Program Files\\x.txt  "), "\\Program Files\\x.txt");
    EXPECT_EQ(path_argument("\"a b\""), "a b");
    EXPECT_EQ(path_argument("\""), "\"");
    EXPECT_EQ(path_argument("  "), "");
    EXPECT_EQ(path_argument(""), "");
}

TEST(CommandTable, AliasesNameTheSameCommand) {
    const std::pair<const char*, const char*> aliases[] = {
        {"X", "EXIT"}, {"?", "HELP"}, {"L", "LANDMARKS"}, {"MAP", "MEMMAP"}, {"I", "INFO"}};
    for (const auto& [word, alias] : aliases) {
        ASSERT_NE(find_explorer_command(word), nullptr) << word;
        EXPECT_EQ(find_explorer_command(word), find_explorer_command(alias)) << alias;
    }
}

TEST(CommandTable, WordsAreComparedInFull) {
    EXPECT_EQ(find_explorer_command("DIS"), nullptr);
    EXPECT_EQ(find_explorer_command("DISKSX"), nullptr);
    EXPECT_EQ(find_explorer_command("m"), nullptr);
    EXPECT_EQ(find_explorer_command(""), nullptr);
    EXPECT_EQ(find_explorer_command(std::string(47, 'X')), nullptr);
}

TEST(CommandTable, CommandsStandInTheOrderInWhichTheyAreTried) {
    const char* const order[] = {
        "X",    "?",      "L",          "MAP",       "I",       "M",     "M!",  "F",       "C",    ">",
        "A",    "H",      "HA",         "T",         "SAVE",    "LOAD",  "R",   "W",       "V",    "DISKS",
        "DISK", "SECTOR", "PARTITIONS", "PARTITION", "VOLUMES", "DIRFS", "CAT", "HEXFILE", "BOOT", "OS"};
    ASSERT_EQ(explorer_commands().size(), std::size(order));
    for (std::size_t i = 0; i < std::size(order); ++i)
        EXPECT_STREQ(explorer_commands()[i].word, order[i]);
}

}  // namespace
}  // namespace korvane
