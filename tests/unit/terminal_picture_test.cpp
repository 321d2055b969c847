#include "terminal_picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "screen/font.h"

namespace korvane::host {
namespace {

constexpr std::uint32_t columns = 10;
constexpr std::uint32_t rows = 5;

class Screen {
  public:
    void print(std::uint32_t row, std::uint32_t column, std::string_view text) {
        for (const char code : text) {
            for (std::uint32_t y = 0; y < 16; ++y)
                for (std::uint32_t x = 0; x < 8; ++x)
                    words_[(std::size_t{row} * 16 + y) * columns * 8 + std::size_t{column} * 8 + x] =
                        (font_glyphs[static_cast<std::uint8_t>(code)][y] >> (7 - x) & 1) != 0 ? 0xFFFFFF : 0;
            ++column;
        }
    }
    Pixels pixels() const { return {words_.data(), columns * 8, rows * 16, columns * 8}; }

  private:
    std::vector<std::uint32_t> words_ = std::vector<std::uint32_t>(std::size_t{columns} * 8 * rows * 16, 0);
};

// Just enough of a terminal to see what the control sequences leave on it.
class Terminal {
  public:
    explicit Terminal(TerminalSize size) : text_(size.rows, std::string(size.columns, ' ')) {}

    void receive(std::string_view bytes) {
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (bytes[i] != '\x1b') {
                text_.at(row_).at(column_++) = bytes[i];
                continue;
            }
            const std::size_t final_byte = bytes.find_first_not_of("0123456789;", i + 2);
            const std::string parameters(bytes.substr(i + 2, final_byte - i - 2));
            if (bytes[final_byte] == 'H') {
                row_ = static_cast<std::size_t>(std::stoi(parameters)) - 1;
                column_ =
                    static_cast<std::size_t>(std::stoi(parameters.substr(parameters.find(';') + 1))) - 1;
            } else if (bytes[final_byte] == 'J') {
                for (std::string& line : text_)
                    line.assign(line.size(), ' ');
            }
            i = final_byte;
        }
    }
    const std::vector<std::string>& text() const { return text_; }

  private:
    std::vector<std::string> text_;
    std::size_t row_ = 0;
    std::size_t column_ = 0;
};

TEST(TerminalPicture, ShowsTheScreen) {
    Screen screen;
    screen.print(0, 0, "HELLO");
    screen.print(4, 9, "X");
    TerminalPicture picture;
    Terminal terminal({columns, rows});
    terminal.receive(picture.update(screen.pixels(), {columns, rows}));
    EXPECT_EQ(terminal.text(), (std::vector<std::string>{"HELLO     ", "          ", "          ",
                                                         "          ", "         X"}));
}

TEST(TerminalPicture, SendsOnlyWhatChanged) {
    Screen screen;
    screen.print(0, 0, "HELLO");
    TerminalPicture picture;
    picture.update(screen.pixels(), {columns, rows});
    EXPECT_EQ(picture.update(screen.pixels(), {columns, rows}), "");
    screen.print(2, 3, "!");
    EXPECT_EQ(picture.update(screen.pixels(), {columns, rows}),
              "\x1b[3;4H\x1b[38;2;255;255;255m\x1b[48;2;0;0;0m!");
}

TEST(TerminalPicture, NewSizeRedrawsEverything) {
    Screen screen;
    screen.print(0, 0, "HELLO");
    TerminalPicture picture;
    picture.update(screen.pixels(), {columns, rows});
    Terminal terminal({20, 7});
    terminal.receive(picture.update(screen.pixels(), {20, 7}));
    EXPECT_EQ(terminal.text().front(), "HELLO               ");
    EXPECT_EQ(terminal.text().back(), std::string(20, ' '));
}

TEST(TerminalPicture, SmallTerminalFollowsTheLastChange) {
    Screen screen;
    screen.print(0, 0, "TOP");
    TerminalPicture picture;
    const TerminalSize size = {4, 2};
    Terminal terminal(size);
    terminal.receive(picture.update(screen.pixels(), size));
    EXPECT_EQ(terminal.text(), (std::vector<std::string>{"TOP ", "    "}));
    screen.print(3, 6, "LOW");
    terminal.receive(picture.update(screen.pixels(), size));
    // The cell at row 3, column 8 changed last; a quarter of the view is kept on its other side.
    EXPECT_EQ(terminal.text(), (std::vector<std::string>{"    ", "LOW "}));
}

TEST(TerminalPicture, SurroundingsOfTheLastChangeAreInView) {
    Screen screen;
    screen.print(0, 0, "A");
    screen.print(4, 0, "E");
    TerminalPicture picture;
    const TerminalSize size = {columns, 4};
    Terminal terminal(size);
    terminal.receive(picture.update(screen.pixels(), size));
    EXPECT_EQ(terminal.text().back().front(), 'E');
    // Of four rows, one above and one below the change.
    screen.print(1, 0, "B");
    terminal.receive(picture.update(screen.pixels(), size));
    EXPECT_EQ(terminal.text().front().front(), 'A');
    screen.print(3, 0, "D");
    terminal.receive(picture.update(screen.pixels(), size));
    EXPECT_EQ(terminal.text().back().front(), 'E');
}

TEST(TerminalPicture, LineStandsAboveTheScreen) {
    Screen screen;
    screen.print(0, 0, "HELLO");
    TerminalPicture picture;
    const TerminalSize size = {columns, rows + 1};
    Terminal terminal(size);
    picture.set_line("KEYS AND MORE");
    terminal.receive(picture.update(screen.pixels(), size));
    EXPECT_EQ(terminal.text()[0], "KEYS AND M");
    EXPECT_EQ(terminal.text()[1], "HELLO     ");
    picture.set_line("");
    terminal.receive(picture.update(screen.pixels(), size));
    EXPECT_EQ(terminal.text()[0], "HELLO     ");
    EXPECT_EQ(terminal.text()[1], "          ");
}

TEST(TerminalPicture, TerminalOfOneRowHasNoLine) {
    Screen screen;
    screen.print(0, 0, "A");
    TerminalPicture picture;
    Terminal terminal({columns, 1});
    picture.set_line("KEYS");
    terminal.receive(picture.update(screen.pixels(), {columns, 1}));
    EXPECT_EQ(terminal.text().front(), "A         ");
}

TEST(TerminalPicture, InvalidatedPictureIsDrawnAgain) {
    Screen screen;
    screen.print(1, 1, "A");
    TerminalPicture picture;
    const std::string first = picture.update(screen.pixels(), {columns, rows});
    picture.invalidate();
    EXPECT_EQ(picture.update(screen.pixels(), {columns, rows}), first);
}

TEST(TerminalPicture, TerminalWithoutCellsGetsNothing) {
    Screen screen;
    screen.print(0, 0, "A");
    TerminalPicture picture;
    EXPECT_EQ(picture.update(screen.pixels(), {0, 0}), "");
}

}  // namespace
}  // namespace korvane::host
