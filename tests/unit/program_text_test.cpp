#include "files/program_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "program/messages.h"

namespace korvane {
namespace {

std::vector<std::string> lines_of(std::string_view text) {
    std::vector<std::string> lines;
    LineAssembler assembler;
    for (const char byte : text)
        if (assembler.add(byte)) lines.emplace_back(assembler.line());
    if (assembler.finish()) lines.emplace_back(assembler.line());
    return lines;
}

using Lines = std::vector<std::string>;

TEST(LineAssembler, EndsALineAtCrAtLfAndAtBothTogether) {
    const Lines expected = {"10 A", "20 B", "30 C"};
    EXPECT_EQ(lines_of("10 A\r20 B\r30 C\r"), expected);
    EXPECT_EQ(lines_of("10 A\n20 B\n30 C\n"), expected);
    EXPECT_EQ(lines_of("10 A\r\n20 B\r\n30 C\r\n"), expected);
}

TEST(LineAssembler, IgnoresEmptyLines) {
    EXPECT_EQ(lines_of("\r\n\n\r10 A\n\n\n20 B\r\r"), (Lines{"10 A", "20 B"}));
    EXPECT_EQ(lines_of(""), Lines{});
    EXPECT_EQ(lines_of("\r\n\r\n"), Lines{});
}

TEST(LineAssembler, ALastLineWithoutALineEndCounts) {
    EXPECT_EQ(lines_of("10 A\r\n20 B"), (Lines{"10 A", "20 B"}));
}

TEST(LineAssembler, KeepsTheFirst299CharactersOfALine) {
    const std::string longest(299, 'x');
    EXPECT_EQ(lines_of(longest + "\n20 B"), (Lines{longest, "20 B"}));
    EXPECT_EQ(lines_of(longest + "y\n20 B"), (Lines{longest, "20 B"}));
    EXPECT_EQ(lines_of(std::string(10000, 'x') + "\r\n20 B"), (Lines{longest, "20 B"}));
}

TEST(LineAssembler, ABlankOrZeroByteIsAnOrdinaryCharacter) {
    EXPECT_EQ(lines_of(std::string_view(" \n\0\n", 4)), (Lines{" ", std::string(1, '\0')}));
}

NumberedLine split(std::string_view line) {
    NumberedLine numbered{};
    EXPECT_EQ(split_program_line(line, numbered), nullptr) << line;
    return numbered;
}

const char* fault_of(std::string_view line) {
    NumberedLine numbered{};
    return split_program_line(line, numbered);
}

TEST(SplitProgramLine, DropsLeadingBlanksAndOneBlankBehindTheNumber) {
    EXPECT_EQ(split("10 PRINT").number, 10U);
    EXPECT_EQ(split("10 PRINT").text, "PRINT");
    EXPECT_EQ(split("   10 PRINT").number, 10U);
    EXPECT_EQ(split("10   PRINT").text, "  PRINT");
    EXPECT_EQ(split("10PRINT").text, "PRINT");
    EXPECT_EQ(split("10\tPRINT").text, "\tPRINT");
    EXPECT_EQ(split("10").text, "");
    EXPECT_EQ(split("10 ").text, "");
    EXPECT_EQ(split("0010 X").number, 10U);
}

TEST(SplitProgramLine, ALineWithoutANumberIsADirectStatement) {
    EXPECT_EQ(fault_of("PRINT 1"), message::direct_statement_in_file);
    EXPECT_EQ(fault_of("  "), message::direct_statement_in_file);
    EXPECT_EQ(fault_of("-1 X"), message::direct_statement_in_file);
    EXPECT_EQ(fault_of("\t10 X"), message::direct_statement_in_file);
    EXPECT_EQ(fault_of(std::string_view("\0", 1)), message::direct_statement_in_file);
}

TEST(SplitProgramLine, LineNumbersGoUpTo4294967294) {
    EXPECT_EQ(split("0 X").number, 0U);
    EXPECT_EQ(split("4294967294 X").number, 4294967294U);
    EXPECT_EQ(fault_of("4294967295 X"), message::line_number_too_large);
    EXPECT_EQ(fault_of("18446744073709551626 X"), message::line_number_too_large);
    EXPECT_EQ(fault_of(std::string(299, '9')), message::line_number_too_large);
    EXPECT_EQ(split(std::string(200, '0') + "7 X").number, 7U);
}

}  // namespace
}  // namespace korvane
