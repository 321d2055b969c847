// The index of HELP in windows of every width: the names of a category stand on lines of at most 79
// characters and at most the window's width, two blanks between them, and a name that would pass the limit
// starts a new line. So does the one behind a name that is longer than the window is wide.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "help/help_table.h"
#include "linked_session.h"
#include "screen/console.h"

namespace korvane::test {
namespace {

constexpr std::uint32_t columns = 80;
constexpr std::uint32_t rows = 128;

// Rows of a window that is being printed in.
class WindowRows {
  public:
    explicit WindowRows(std::size_t width) : width_(width) {}

    // A text that ends its line even where it has just filled one.
    void print_line(std::string_view text) {
        print(text);
        if (text.empty() || text.size() % width_ == 0) rows_.emplace_back();
    }

    // Names of a category.
    void print_names(const std::vector<std::string>& names) {
        std::string line;
        for (const std::string& name : names) {
            if (!line.empty() && line.size() + 2 + name.size() > std::min<std::size_t>(width_, 79)) {
                print(line);
                line.clear();
            }
            line.append(line.empty() ? 0 : 2, ' ').append(name);
        }
        print(line);
    }

    const std::vector<std::string>& rows() const { return rows_; }

  private:
    void print(std::string_view text) {
        for (std::size_t at = 0; at < text.size(); at += width_)
            rows_.emplace_back(text.substr(at, width_));
    }

    std::size_t width_;
    std::vector<std::string> rows_;
};

std::vector<std::string> expected_rows(std::size_t width) {
    WindowRows window(width);
    window.print_line("Korvane BASIC v2.0 help. Type HELP name for details.");
    HelpWalk walk;
    for (bool more = walk.next(); more;) {
        const std::string category(walk.entry().category);
        std::vector<std::string> names;
        for (; more && walk.entry().category == category; more = walk.next())
            names.emplace_back(walk.entry().name);
        window.print_line("");
        window.print_line("[" + category + "]");
        window.print_names(names);
    }
    return window.rows();
}

// What stands in the window above the cursor.
std::vector<std::string> shown_rows(std::uint32_t width) {
    std::vector<std::string> shown;
    for (std::uint32_t row = 0; row < console.cursor_row; ++row) {
        std::string text(reinterpret_cast<const char*>(console.grid[row]), width);
        text.erase(text.find_last_not_of(' ') + 1);
        shown.push_back(text);
    }
    return shown;
}

TEST(HelpIndex, IsLaidOutByTheSameRuleInWindowsOfEveryWidth) {
    LinkedSession session(columns * 8, rows * 16);
    ASSERT_TRUE(session.type("10 FOR W=1 TO 80: TXTWINDOW 1,1,W,128: CLS: HELP: LINE INPUT A$: NEXT"));
    for (std::uint32_t width = 1; width <= columns; ++width) {
        ASSERT_TRUE(session.type(width == 1 ? "RUN" : ""));
        std::vector<std::string> expected = expected_rows(width);
        for (std::string& row : expected)
            row.erase(row.find_last_not_of(' ') + 1);
        // What is more than the window's rows has scrolled away.
        const std::size_t visible = std::min<std::size_t>(expected.size(), rows - 1);
        expected.erase(expected.begin(), expected.end() - static_cast<std::ptrdiff_t>(visible));
        EXPECT_EQ(shown_rows(width), expected) << "in " << width << " columns";
    }
    EXPECT_EQ(session.problem(), "");
}

}  // namespace
}  // namespace korvane::test
