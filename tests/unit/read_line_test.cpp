#include "screen/read_line.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "console_text.h"
#include "memory_screen.h"
#include "screen/console.h"
#include "typed_keys.h"

namespace korvane {
namespace {

using test::MemoryScreen;
using test::row_text;
using test::TypedKeys;

std::string read(std::size_t capacity = 256) {
    return test::line_read(key_read_line, line_aborted, capacity);
}

TEST(ReadLine, EchoesUntilEnterAndEndsTheLine) {
    MemoryScreen memory(80, 64);
    TypedKeys keys;
    keys.text("Hi, you").enter();
    con_put_string("?");
    EXPECT_EQ(read(), "Hi, you");
    EXPECT_EQ(row_text(0), "?Hi, you");
    EXPECT_EQ(console.cursor_row, 1u);
    EXPECT_EQ(console.cursor_column, 0u);
}

TEST(ReadLine, EscapeAborts) {
    MemoryScreen memory(80, 64);
    TypedKeys keys;
    keys.text("AB").escape();
    EXPECT_EQ(read(), "(aborted)");
    EXPECT_EQ(row_text(0), "AB");
}

TEST(ReadLine, ControlCharactersAndScanCodesAreIgnored) {
    MemoryScreen memory(80, 64);
    TypedKeys keys;
    keys.text("A\t\n\x1F\x01").scan_key(uefi::scan_left).scan_key(uefi::scan_delete).text("B").enter();
    EXPECT_EQ(read(), "AB");
    EXPECT_EQ(row_text(0), "AB");
}

TEST(ReadLine, HighAndWideCharactersKeepTheirLowByte) {
    MemoryScreen memory(80, 64);
    TypedKeys keys;
    keys.character_key(0xFF).character_key(0x2541).enter();
    EXPECT_EQ(read(), "\xFF\x41");
}

TEST(ReadLine, BackspaceBlanksTheLastCell) {
    MemoryScreen memory(80, 64);
    TypedKeys keys;
    keys.text("AB").backspace().text("C").backspace(5).text("D").enter();
    con_put_string("?");
    EXPECT_EQ(read(), "D");
    EXPECT_EQ(row_text(0), "?D");
}

TEST(ReadLine, BackspaceGoesBackOverTheRowEnd) {
    MemoryScreen memory(80, 64);  // 10 columns
    TypedKeys keys;
    keys.text("0123456789AB").backspace(3).text("x").enter();
    EXPECT_EQ(read(), "012345678x");
    EXPECT_EQ(row_text(0), "012345678x");
    EXPECT_EQ(row_text(1), "");
}

TEST(ReadLine, BackspaceStaysBelowTheTopOfTheTextArea) {
    MemoryScreen memory(80, 64);
    console.text_window_active = true;
    console.text_window = {.left = 2, .right = 4, .top = 1, .bottom = 2};
    console.cursor_row = 1;
    console.cursor_column = 2;
    TypedKeys keys;
    // The first three of eight characters scroll away: the cursor cannot go back to where they were.
    keys.text("abcdefgh").backspace(8).text("Z").enter();
    EXPECT_EQ(read(), "Z");
    EXPECT_EQ(row_text(1), "  Z");
}

TEST(ReadLine, TheLastByteIsForTheTerminator) {
    MemoryScreen memory(80, 64);
    TypedKeys keys;
    keys.text("ABCDE").enter();
    EXPECT_EQ(read(4), "ABC");
    EXPECT_EQ(row_text(0), "ABC");
}

TEST(ReadLine, A255ByteLineFitsIn256) {
    MemoryScreen memory(640, 480);
    TypedKeys keys;
    keys.text(std::string(255, 'A')).text("B").enter();
    EXPECT_EQ(read(), std::string(255, 'A'));
}

}  // namespace
}  // namespace korvane
