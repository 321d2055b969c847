#include "transcript.h"

#include <gtest/gtest.h>

#include "hosted_machine.h"
#include "text_syntax.h"

namespace korvane::transcript {
namespace {

TEST(TextSyntaxTest, Numbers) {
    EXPECT_EQ(parse_number("12"), 12U);
    EXPECT_EQ(parse_number("0x1F"), 31U);
    EXPECT_EQ(parse_number("3K"), 3072U);
    EXPECT_EQ(parse_number("0x10M"), 16U * 1024 * 1024);
    EXPECT_EQ(parse_number(""), std::nullopt);
    EXPECT_EQ(parse_number("1x"), std::nullopt);
    EXPECT_EQ(parse_colour("FF8000"), 0xFF8000U);
    EXPECT_EQ(parse_colour("FF800"), std::nullopt);
}

TEST(TextSyntaxTest, Escapes) {
    EXPECT_EQ(unescape("a\\r\\n\\x41\\\\"), "a\r\nA\\");
    EXPECT_EQ(unescape("\\q"), std::nullopt);
    EXPECT_EQ(unescape("\\x4"), std::nullopt);
    EXPECT_EQ(unescape("a\\"), std::nullopt);
    EXPECT_EQ(parse_hex_bytes("01 aB"), std::string("\x01\xAB"));
    EXPECT_EQ(parse_hex_bytes("1"), std::nullopt);
}

TEST(TextSyntaxTest, Keys) {
    const auto keys = named_keys("a{UP}{F3}{x1234}{ESC}{LBRACE}é");
    ASSERT_TRUE(keys.has_value());
    ASSERT_EQ(keys->size(), 7U);
    EXPECT_EQ((*keys)[0].UnicodeChar, u'a');
    EXPECT_EQ((*keys)[1].ScanCode, uefi::scan_up);
    EXPECT_EQ((*keys)[2].ScanCode, 13);
    EXPECT_EQ((*keys)[3].UnicodeChar, 0x1234);
    EXPECT_EQ((*keys)[4].ScanCode, uefi::scan_escape);
    EXPECT_EQ((*keys)[5].UnicodeChar, u'{');
    EXPECT_EQ((*keys)[6].UnicodeChar, 0x82);  // its place in code page 437
    EXPECT_FALSE(named_keys("{NOKEY}").has_value());
    EXPECT_FALSE(named_keys("{UP").has_value());
}

TEST(TextSyntaxTest, Times) {
    const auto time = parse_time("2026-02-28 23:59:58");
    ASSERT_TRUE(time.has_value());
    EXPECT_EQ(time->Month, 2);
    EXPECT_EQ(time->Second, 58);
    EXPECT_FALSE(parse_time("2026-02-28").has_value());
}

class TranscriptTest : public ::testing::Test {
  protected:
    std::vector<Case> read(const std::string& text) {
        folder_.write("t.txt", text);
        return read_transcript(folder_.path() / "t.txt", problems_);
    }
    host::TemporaryFolder folder_;
    std::vector<std::string> problems_;
};

TEST_F(TranscriptTest, StepsTakeTheRowsBelowThem) {
    const auto cases =
        read("=== one\n> PRINT 1\n 1\n\n x  \n\n\n> NEW\n=== two\n> A\n|\n@ note\n@cursor 1 2\n");
    ASSERT_TRUE(problems_.empty()) << problems_.front();
    ASSERT_EQ(cases.size(), 2U);
    EXPECT_EQ(cases[0].title, "one");
    ASSERT_EQ(cases[0].steps.size(), 2U);
    const Step& step = cases[0].steps[0];
    EXPECT_EQ(step.line, 2U);
    EXPECT_EQ(step.keys.size(), 7U);
    ASSERT_EQ(step.rows.size(), 3U);
    EXPECT_EQ(step.rows[0].text, " 1");
    EXPECT_EQ(step.rows[1].text, "");
    EXPECT_EQ(step.rows[2].text, " x");
    EXPECT_TRUE(cases[0].steps[1].rows.empty());
    ASSERT_EQ(cases[1].steps.size(), 2U);
    ASSERT_EQ(cases[1].steps[0].rows.size(), 1U);
    EXPECT_EQ(cases[1].steps[0].rows[0].text, "");
}

TEST_F(TranscriptTest, RowsCanBeQuotedAndPatterns) {
    const auto cases = read("=== one\n> X\n|> y\n|@z\n~ [0-9]+\n");
    ASSERT_TRUE(problems_.empty()) << problems_.front();
    const auto& rows = cases[0].steps[0].rows;
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].text, "> y");
    EXPECT_EQ(rows[1].text, "@z");
    EXPECT_TRUE(rows[2].is_pattern);
}

TEST_F(TranscriptTest, FilesHaveLines) {
    const auto cases = read("=== one\n@file A.TXT\n|one\n|two\\x00\\c\n> X\n@expect-file A.TXT\n|one\n");
    ASSERT_TRUE(problems_.empty()) << problems_.front();
    ASSERT_EQ(cases[0].files.size(), 1U);
    EXPECT_EQ(cases[0].files[0].content, std::string("one\r\ntwo\0", 9));
    EXPECT_EQ(cases[0].steps[1].content, "one\r\n");
}

TEST_F(TranscriptTest, MistakesAreReported) {
    read("stray\n=== one\n@nonsense\n@pixel 1\n@fail NoService 1 EFI_ABORTED\n row\n> X\n@screen 640x480\n");
    EXPECT_EQ(problems_.size(), 6U);
    EXPECT_NE(problems_[1].find("t.txt:3: unknown directive @nonsense"), std::string::npos);
}

TEST_F(TranscriptTest, CasesWithTheSameOptionsShareAMachine) {
    const auto cases =
        read("=== a\n@screen 640x480\n=== b\n@screen 640x480\n@file X\n=== c\n=== d\n@file STARTUP.BAS\n");
    ASSERT_EQ(cases.size(), 4U);
    EXPECT_EQ(cases[0].machine_key, cases[1].machine_key);
    EXPECT_NE(cases[0].machine_key, cases[2].machine_key);
    EXPECT_TRUE(cases[3].own_start);
}

}  // namespace
}  // namespace korvane::transcript
