#include "screen/line_editor.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "console_text.h"
#include "memory_screen.h"
#include "screen/console.h"
#include "screen/font.h"
#include "typed_keys.h"

namespace korvane {
namespace {

using test::MemoryScreen;
using test::TypedKeys;

// A screen of 10 columns and 4 rows with the editor in overwrite mode.
class LineEditorTest : public testing::Test {
  protected:
    LineEditorTest() : memory(80, 64) { initialize_line_editor(); }

    std::string edit(std::size_t capacity = 256) {
        return test::line_read(edit_screen_line, edit_aborted, capacity);
    }

    // The text of the rows, without trailing blanks, separated by "|".
    std::string rows() const {
        std::string all;
        for (std::uint32_t row = 0; row < text_rows(); ++row)
            all += (row == 0 ? "" : "|") + test::row_text(row);
        return all;
    }

    // The continuation flags of the rows.
    std::string flags() const {
        std::string all;
        for (std::uint32_t row = 0; row < text_rows(); ++row)
            all += console.continuation[row] != 0 ? '1' : '0';
        return all;
    }

    void expect_cursor(std::uint32_t row, std::uint32_t column) const {
        EXPECT_EQ(console.cursor_row, row);
        EXPECT_EQ(console.cursor_column, column);
    }

    void put_cursor(std::uint32_t row, std::uint32_t column) const {
        console.cursor_row = row;
        console.cursor_column = column;
    }

    // The ninth pixel row of a cell as a font row.
    std::uint8_t cell_bits(std::uint32_t row, std::uint32_t column) const {
        std::uint8_t bits = 0;
        for (std::uint32_t x = 0; x < glyph_width; ++x) {
            const bool lit = memory.front(column * glyph_width + x, row * glyph_height + 8) == white;
            bits = static_cast<std::uint8_t>(bits << 1 | (lit ? 1 : 0));
        }
        return bits;
    }

    MemoryScreen memory;
    TypedKeys keys;
};

TEST_F(LineEditorTest, EnterTakesTheRow) {
    keys.text("PRINT 1").enter();
    EXPECT_EQ(edit(), "PRINT 1");
    EXPECT_EQ(rows(), "PRINT 1|||");
    expect_cursor(1, 0);
}

TEST_F(LineEditorTest, APromptOnTheRowIsPartOfTheLine) {
    con_put_string("10 ");
    keys.text("END").enter();
    EXPECT_EQ(edit(), "10 END");
}

TEST_F(LineEditorTest, LeadingBlanksStayAndTrailingOnesGo) {
    keys.text("  A B  ").enter();
    EXPECT_EQ(edit(), "  A B");
}

TEST_F(LineEditorTest, AnEmptyRowIsAnEmptyLine) {
    keys.enter();
    EXPECT_EQ(edit(), "");
    expect_cursor(1, 0);
}

TEST_F(LineEditorTest, EscapeAbortsAndKeepsTheCursor) {
    keys.text("AB").scan_key(uefi::scan_left).escape();
    EXPECT_EQ(edit(), "(aborted)");
    expect_cursor(0, 1);
    EXPECT_EQ(rows(), "AB|||");
}

TEST_F(LineEditorTest, AFailedReadIsTriedAgain) {
    keys.failing_read(uefi::not_ready).text("A").failing_read(uefi::device_error).enter();
    EXPECT_EQ(edit(), "A");
}

TEST_F(LineEditorTest, TypingOverTheRightEdgeContinuesTheLine) {
    keys.text("0123456789ABC").enter();
    EXPECT_EQ(edit(), "0123456789ABC");
    EXPECT_EQ(rows(), "0123456789|ABC||");
    EXPECT_EQ(flags(), "0100");
    expect_cursor(2, 0);
}

TEST_F(LineEditorTest, AFullRowLeavesABlankContinuation) {
    keys.text("0123456789").enter();
    EXPECT_EQ(edit(), "0123456789");
    EXPECT_EQ(flags(), "0100");
    expect_cursor(2, 0);
}

TEST_F(LineEditorTest, TypingAtTheBottomScrolls) {
    put_cursor(2, 0);
    con_put_string("above\r");
    keys.text("0123456789A").enter();
    EXPECT_EQ(edit(), "0123456789A");
    // Enter on the bottom row scrolls once more.
    EXPECT_EQ(rows(), "above|0123456789|A|");
    EXPECT_EQ(flags(), "0010");
    expect_cursor(3, 0);
}

TEST_F(LineEditorTest, EnterAnywhereInALogicalLineTakesAllOfIt) {
    keys.text("0123456789ABCDEFGHIJK").scan_key(uefi::scan_up).enter();
    EXPECT_EQ(edit(), "0123456789ABCDEFGHIJK");
    expect_cursor(3, 0);
}

TEST_F(LineEditorTest, EachRowLosesItsTrailingBlanks) {
    keys.text("01234567  AB").enter();
    EXPECT_EQ(edit(), "01234567AB");
}

TEST_F(LineEditorTest, AnEarlierLineCanBeEnteredAgain) {
    con_put_string("PRINT 7\rout\r");
    keys.scan_key(uefi::scan_up, 2).enter();
    EXPECT_EQ(edit(), "PRINT 7");
    expect_cursor(1, 0);
}

TEST_F(LineEditorTest, AWrappedOutputLineIsOneLine) {
    con_put_string("0123456789AB\r");
    keys.scan_key(uefi::scan_up).enter();
    EXPECT_EQ(edit(), "0123456789AB");
    expect_cursor(2, 0);
}

TEST_F(LineEditorTest, TheStartingRowBeginsALine) {
    con_put_string("0123456789");  // the cursor stands on a continuation row
    EXPECT_EQ(flags(), "0100");
    keys.text("A").enter();
    EXPECT_EQ(edit(), "A");
    EXPECT_EQ(flags(), "0000");
}

TEST_F(LineEditorTest, EnterMakesTheNextRowALineOfItsOwn) {
    console.continuation[1] = 0;
    con_put_string("A\r0123456789B");  // rows 1 and 2 are one line
    EXPECT_EQ(flags(), "0010");
    put_cursor(0, 1);
    keys.enter();
    edit();
    expect_cursor(1, 0);
    EXPECT_EQ(flags(), "0010");
}

TEST_F(LineEditorTest, TheCursorStaysInsideTheTextArea) {
    keys.scan_key(uefi::scan_up).scan_key(uefi::scan_left).text("A");
    keys.scan_key(uefi::scan_down, 9).scan_key(uefi::scan_right, 20).escape();
    edit();
    EXPECT_EQ(rows(), "A|||");
    expect_cursor(3, 9);
}

TEST_F(LineEditorTest, LeftAndRightCrossRowEnds) {
    put_cursor(1, 0);
    keys.scan_key(uefi::scan_left).escape();
    edit();
    expect_cursor(0, 9);
    keys.scan_key(uefi::scan_right).escape();
    edit();
    expect_cursor(1, 0);
}

TEST_F(LineEditorTest, HomeGoesToTheLeftEdge) {
    put_cursor(1, 7);
    keys.scan_key(uefi::scan_home).escape();
    edit();
    expect_cursor(1, 0);
}

TEST_F(LineEditorTest, EndGoesBehindTheLastCharacterOfTheRow) {
    con_put_string("AB CD");
    put_cursor(0, 0);
    keys.scan_key(uefi::scan_end).escape();
    edit();
    expect_cursor(0, 5);
    put_cursor(2, 4);
    keys.scan_key(uefi::scan_end).escape();
    edit();
    expect_cursor(2, 0);
    con_draw_cell(3, 9, 'Z');
    put_cursor(3, 0);
    keys.scan_key(uefi::scan_end).escape();
    edit();
    expect_cursor(3, 9);
}

TEST_F(LineEditorTest, OtherKeysAreIgnored) {
    keys.scan_key(uefi::scan_page_up).scan_key(uefi::scan_f1).text("\t\n\x1F");
    keys.character_key(255).character_key(0x2541).character_key(0).text("A").character_key(254).enter();
    EXPECT_EQ(edit(), "A\xFE");
}

TEST_F(LineEditorTest, OverwritingReplaces) {
    keys.text("ABCD").scan_key(uefi::scan_left, 3).text("x").enter();
    EXPECT_EQ(edit(), "AxCD");
}

TEST_F(LineEditorTest, OverwritingIsBoundedByTheCapacity) {
    keys.text("ABCDE").enter();
    EXPECT_EQ(edit(4), "ABC");
    EXPECT_EQ(rows(), "ABC|||");
}

TEST_F(LineEditorTest, AtMost255BytesAreTaken) {
    memory.set_mode(640, 480);
    con_reset();
    keys.text(std::string(255, 'A')).text("B").enter();
    EXPECT_EQ(edit(), std::string(255, 'A'));
    // A longer logical line, made by output, is cut.
    con_put_string((std::string(260, 'C') + "\r").c_str());
    keys.scan_key(uefi::scan_up).enter();
    EXPECT_EQ(edit(), std::string(255, 'C'));
}

TEST_F(LineEditorTest, DeleteTakesTheByteUnderTheCursor) {
    keys.text("ABCD").scan_key(uefi::scan_left, 3).scan_key(uefi::scan_delete).enter();
    EXPECT_EQ(edit(), "ACD");
}

TEST_F(LineEditorTest, DeletePullsBytesOverTheRowEnd) {
    keys.text("0123456789ABC").scan_key(uefi::scan_up).scan_key(uefi::scan_home);
    keys.scan_key(uefi::scan_delete).enter();
    EXPECT_EQ(edit(), "123456789ABC");
    EXPECT_EQ(rows(), "123456789A|BC||");
    EXPECT_EQ(flags(), "0100");
}

TEST_F(LineEditorTest, DeleteBehindTheTextDoesNothing) {
    keys.text("AB").scan_key(uefi::scan_right, 3).scan_key(uefi::scan_delete).escape();
    edit();
    EXPECT_EQ(rows(), "AB|||");
    expect_cursor(0, 5);
}

TEST_F(LineEditorTest, DeletingToAFullRowLeavesNothingBehind) {
    keys.text("0123456789A").scan_key(uefi::scan_up).scan_key(uefi::scan_home);
    keys.scan_key(uefi::scan_delete).escape();
    edit();
    EXPECT_EQ(rows(), "123456789A|||");
    EXPECT_EQ(memory.front(0, 16 + 8), 0u);
}

TEST_F(LineEditorTest, BackspaceTakesTheByteBeforeTheCursor) {
    keys.text("ABCD").scan_key(uefi::scan_left).backspace().enter();
    EXPECT_EQ(edit(), "ABD");
}

TEST_F(LineEditorTest, BackspaceAtTheStartDoesNothing) {
    con_put_string("A\rB\r");
    put_cursor(1, 0);
    keys.backspace().escape();
    edit();
    EXPECT_EQ(rows(), "A|B||");
    expect_cursor(1, 0);
}

TEST_F(LineEditorTest, BackspaceGoesBackOverTheRowEnd) {
    keys.text("0123456789A").backspace(2).escape();
    edit();
    EXPECT_EQ(rows(), "012345678|||");
    expect_cursor(0, 9);
}

TEST_F(LineEditorTest, BackspaceBehindTheTextMovesTheCursor) {
    keys.text("AB").scan_key(uefi::scan_right, 2).backspace().escape();
    edit();
    EXPECT_EQ(rows(), "AB|||");
    expect_cursor(0, 3);
}

TEST_F(LineEditorTest, InsertingMovesTheRestRight) {
    keys.text("AC").scan_key(uefi::scan_left).scan_key(uefi::scan_insert).text("Bb").enter();
    EXPECT_EQ(edit(), "ABbC");
}

TEST_F(LineEditorTest, InsertModeLastsUntilItIsToggled) {
    keys.text("AC").scan_key(uefi::scan_left).scan_key(uefi::scan_insert).enter();
    edit();
    keys.text("XZ").scan_key(uefi::scan_left).text("Y").enter();
    EXPECT_EQ(edit(), "XYZ");
    keys.scan_key(uefi::scan_insert).text("XZ").scan_key(uefi::scan_left).text("Y").enter();
    EXPECT_EQ(edit(), "XY");
}

TEST_F(LineEditorTest, InsertingBehindTheTextFillsWithBlanks) {
    keys.scan_key(uefi::scan_insert).text("A").scan_key(uefi::scan_right, 2).text("B").enter();
    EXPECT_EQ(edit(), "A  B");
}

TEST_F(LineEditorTest, InsertingPushesBytesOverTheRowEnd) {
    keys.text("0123456789AB").scan_key(uefi::scan_up).scan_key(uefi::scan_home);
    keys.scan_key(uefi::scan_insert).text("x").escape();
    edit();
    EXPECT_EQ(rows(), "x012345678|9AB||");
    EXPECT_EQ(flags(), "0100");
    expect_cursor(0, 1);
}

// An insertion never makes the line grow by a row.
TEST_F(LineEditorTest, InsertingIntoFullRowsOverwrites) {
    con_put_string("0123456789");
    console.continuation[1] = 0;
    put_cursor(0, 8);
    keys.scan_key(uefi::scan_insert).text("xyz").escape();
    edit();
    // The cursor stops at the right edge, where the last key overwrites again.
    EXPECT_EQ(rows(), "01234567xz|||");
    EXPECT_EQ(flags(), "0000");
    expect_cursor(0, 9);
}

TEST_F(LineEditorTest, InsertingTheLastCellMovesToTheNextRow) {
    keys.scan_key(uefi::scan_insert).text("0123456789").escape();
    edit();
    expect_cursor(1, 0);
    EXPECT_EQ(flags(), "0000");
}

TEST_F(LineEditorTest, InsertingTheLastCellAtTheBottomScrolls) {
    put_cursor(3, 0);
    keys.scan_key(uefi::scan_insert).text("0123456789").escape();
    edit();
    EXPECT_EQ(rows(), "||0123456789|");
    expect_cursor(3, 0);
}

TEST_F(LineEditorTest, InsertingIsBoundedByTheCapacity) {
    keys.text("ABC").scan_key(uefi::scan_home).scan_key(uefi::scan_insert).text("x").enter();
    EXPECT_EQ(edit(4), "ABC");
    keys.text("x").enter();
    EXPECT_EQ(edit(5), "x");
}

TEST_F(LineEditorTest, EditingStaysInsideATextWindow) {
    con_put_string("aaaaaaaaaabbbbbbbbbbccccccccccdddddddddd");
    con_put_string("");
    console.text_window_active = true;
    console.text_window = {.left = 2, .right = 4, .top = 1, .bottom = 2};
    con_clear_cells(console.text_window);
    put_cursor(0, 0);
    keys.text("wxyz").enter();
    EXPECT_EQ(edit(), "wxyz");
    // Enter on the window's bottom row scrolled the window alone.
    EXPECT_EQ(rows(), "bbbbbbbbbb|ccz  ccccc|dd   ddddd|");
    expect_cursor(2, 2);
}

TEST_F(LineEditorTest, AOneRowTextAreaKeepsItsRow) {
    console.view_print_active = true;
    console.view_print_top = 2;
    console.view_print_bottom = 2;
    keys.text("0123456789A").enter();
    EXPECT_EQ(edit(), "A123456789");
    expect_cursor(2, 0);
}

TEST_F(LineEditorTest, AnEmptyTextAreaIsSurvived) {
    console.text_window_active = true;
    console.text_window = {.left = 2, .right = 4, .top = 2, .bottom = 3};
    console.view_print_active = true;
    console.view_print_top = 0;
    console.view_print_bottom = 0;
    keys.text("AB").scan_key(uefi::scan_up).scan_key(uefi::scan_down).scan_key(uefi::scan_delete).backspace();
    keys.scan_key(uefi::scan_insert).text("XYZ").enter();
    edit();
    EXPECT_EQ(console.cursor_row, 0u);
    EXPECT_TRUE(memory.guard_is_intact());
}

// Whatever is typed, in whatever text area: the cursor stays inside it, nothing outside it changes, and the
// pixels show what the grid holds.
TEST_F(LineEditorTest, RandomKeysStayInsideTheTextArea) {
    constexpr std::array<std::uint16_t, 9> scan_codes{1, 2, 3, 4, 5, 6, 7, 8, 12};
    std::mt19937 random(20261120);
    const auto below = [&random](std::uint32_t bound) {
        return static_cast<std::uint32_t>(random() % bound);
    };
    for (int round = 0; round < 300; ++round) {
        con_reset();
        con_put_string("a line above, and what it says\rbelow");
        console.text_window_active = true;
        const std::uint32_t left = below(10);
        const std::uint32_t top = below(4);
        console.text_window = {
            .left = left, .right = left + below(10 - left), .top = top, .bottom = top + below(4 - top)};
        const CellRectangle area = console.text_window;
        const Console before = console;
        for (int i = 0; i < 200; ++i) {
            switch (below(4)) {
                case 0:
                    keys.scan_key(scan_codes[below(scan_codes.size())]);
                    break;
                case 1:
                    keys.backspace();
                    break;
                default:
                    keys.character_key(static_cast<char16_t>(' ' + below(96)));
            }
        }
        keys.enter();
        EXPECT_LE(edit(1 + below(256)).size(), 255u);
        EXPECT_EQ(keys.left(), 0u);
        EXPECT_GE(console.cursor_row, area.top);
        EXPECT_LE(console.cursor_row, area.bottom);
        EXPECT_EQ(console.cursor_column, area.left);
        for (std::uint32_t row = 0; row < text_rows(); ++row) {
            for (std::uint32_t column = 0; column < text_columns(); ++column) {
                const bool inside =
                    row >= area.top && row <= area.bottom && column >= area.left && column <= area.right;
                const std::uint8_t was = inside ? console.grid[row][column] : before.grid[row][column];
                EXPECT_EQ(console.grid[row][column], was);
                EXPECT_EQ(cell_bits(row, column), font_glyphs[console.grid[row][column]][8]);
            }
        }
        EXPECT_TRUE(memory.guard_is_intact());
        EXPECT_TRUE(memory.buffers_agree());
        if (HasFailure()) FAIL() << "in round " << round;
    }
}

TEST_F(LineEditorTest, TheCursorIsAFullBlockThatLeavesNoTrace) {
    con_put_string("A");
    put_cursor(0, 0);
    keys.enter();
    edit();
    EXPECT_TRUE(memory.buffers_agree());
    std::string shape;
    for (std::uint32_t y = 0; y < glyph_height; ++y) {
        std::uint8_t bits = 0;
        for (std::uint32_t x = 0; x < glyph_width; ++x)
            bits = static_cast<std::uint8_t>(bits << 1 | (memory.front(x, y) == white ? 1 : 0));
        EXPECT_EQ(bits, font_glyphs['A'][y]) << "row " << y;
    }
}

}  // namespace
}  // namespace korvane
