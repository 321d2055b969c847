#include "program_file.h"

#include <gtest/gtest.h>

#include <string>

#include "host_text.h"

namespace korvane::host {
namespace {

std::string codes_of(std::string_view bytes) {
    return read_program(bytes).codes;
}

TEST(ProgramFile, PlainTextIsItself) {
    const ProgramText program = read_program("10 PRINT 1\r\n20 END\n");
    EXPECT_EQ(program.codes, "10 PRINT 1\r\n20 END\n");
    EXPECT_EQ(program.fault, "");
    EXPECT_EQ(program.loss, "");
}

TEST(ProgramFile, Utf8BecomesCodes) {
    EXPECT_EQ(codes_of("\xEF\xBB\xBF"
                       "10 'é░\u00a0☺⌂"),
              "10 '\x82\xB0\xFF\x01\x7F");
    EXPECT_EQ(codes_of("\xEF\xBB\xBF"), "");
}

TEST(ProgramFile, OtherBytesAreCodesAlready) {
    EXPECT_EQ(codes_of("10 '\x82\n"), "10 '\x82\n");
    // One byte that is no UTF-8 makes all of them codes.
    EXPECT_EQ(codes_of("10 '\xC3\xA9\n20 '\x82\n"), "10 '\xC3\xA9\n20 '\x82\n");
}

TEST(ProgramFile, TabsAreBlanksAndBlankLinesEmpty) {
    EXPECT_EQ(codes_of("\t10\tPRINT\t1\n \t\n\n20 END"), " 10 PRINT 1\n\n\n20 END");
}

TEST(ProgramFile, ControlZAtTheEndIsLeftOut) {
    EXPECT_EQ(codes_of("10 END\r\n\x1a"), "10 END\r\n");
    EXPECT_EQ(codes_of("10 END\x1a\x1a"), "10 END");
    EXPECT_EQ(codes_of("10 '\x1a'\n"), "10 '\x1a'\n");
}

TEST(ProgramFile, Utf16IsRefused) {
    for (const std::string_view bytes : {std::string_view("\xFF\xFE"
                                                          "1\0",
                                                          4),
                                         std::string_view("\xFE\xFF\0"
                                                          "1",
                                                          4),
                                         std::string_view("1\0"
                                                          "0\0",
                                                          4),
                                         std::string_view("\0"
                                                          "1\0"
                                                          "0",
                                                          4)}) {
        const ProgramText program = read_program(bytes);
        EXPECT_NE(program.fault.find("UTF-16"), std::string::npos);
        EXPECT_EQ(program.codes, "");
    }
}

TEST(ProgramFile, FirstBadLineIsNamed) {
    EXPECT_EQ(read_program("10 A\r\n\r\nB\r\nC\r\n").fault, "line 3: Direct statement in file");
    EXPECT_EQ(read_program("4294967294 A\n4294967295 B").fault, "line 2: Line number too large");
    EXPECT_EQ(read_program("99999999999999999999 A\n").fault, "line 1: Line number too large");
    EXPECT_EQ(read_program("1 " + std::string(244, 'A') + "\r2 " + std::string(245, 'A')).fault,
              "line 2: Line too long");
    EXPECT_EQ(read_program("10").fault, "");
}

TEST(ProgramFile, LostCharactersAreNamedWithTheirLine) {
    const ProgramText program = read_program("10 'é\n20 '字字\n");
    EXPECT_EQ(program.codes, "10 '\x82\n20 '??\n");
    EXPECT_EQ(program.loss, "line 2: '字' is not in code page 437 and is read as '?'");
    EXPECT_EQ(read_program("10 PRINT \"?\"\n").loss, "");
}

TEST(ProgramFile, TextOfTheInterpreterComesBack) {
    std::string codes = "10 '";
    for (int code = 1; code < 256; ++code)
        if (code != '\t' && code != '\n' && code != '\r') codes += static_cast<char>(code);
    const std::string text = to_host_text(codes + "\r\n");
    EXPECT_EQ(codes_of(text), codes + "\r\n");
    EXPECT_EQ(to_host_text(codes_of(text)), text);
}

TEST(HostText, FirstCharacterTellsWhatIsCutFromWhatIsWrong) {
    EXPECT_EQ(first_character("é").bytes, 2U);
    EXPECT_EQ(first_character("\xC3").bytes, 0U);
    EXPECT_EQ(first_character("\xF0\x9F\x98").bytes, 0U);
    for (const char* wrong :
         {"\x80", "\xC3x", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE0\x80\x80"}) {
        EXPECT_FALSE(first_character(wrong).is_valid) << wrong;
        EXPECT_EQ(first_character(wrong).bytes, 1U) << wrong;
    }
}

}  // namespace
}  // namespace korvane::host
