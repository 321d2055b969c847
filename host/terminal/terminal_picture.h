// The firmware's screen drawn on a terminal, under a line of text about the session.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "screen_cells.h"
#include "terminal_look.h"

namespace korvane::host {

// Size of a terminal window in character cells.
struct TerminalSize {
    std::uint32_t columns;
    std::uint32_t rows;

    bool operator==(const TerminalSize&) const = default;
};

// Remembers what the terminal shows and produces the control sequences that bring it up to date: one
// terminal cell for each text cell. A screen larger than the terminal is shown in part; the part follows the
// cell that changed last, and what surrounds it, so that the line being typed stays in view.
class TerminalPicture {
  public:
    explicit TerminalPicture(TerminalLook look = {}) : look_(look) {}

    // A line above the screen, in UTF-8, which takes a row of the terminal; empty for none. It is seen with
    // the next update, and not at all where the terminal has one row only.
    void set_line(std::string_view text);

    // The bytes to send so that a terminal of this size shows these pixels; empty when nothing has changed.
    // A new size of terminal or screen redraws everything.
    std::string update(const Pixels& pixels, TerminalSize size);

    // Forgets what the terminal shows: the next update draws everything.
    void invalidate() { shown_.clear(); }

  private:
    void read_screen(const Pixels& pixels);
    void move_view(TerminalSize size);
    Cell wanted_cell(std::uint32_t row, std::uint32_t column) const;
    std::string redraw_all() const;
    std::string draw_changes(TerminalSize size);

    TerminalLook look_;
    std::u32string line_;
    std::uint32_t lines_ = 0;    // terminal rows above the screen: 1 with a line
    std::vector<Cell> screen_;   // every cell of the framebuffer, row by row
    std::uint32_t columns_ = 0;  // of the screen
    std::uint32_t rows_ = 0;
    std::vector<Cell> shown_;  // every cell of the terminal, row by row; empty when unknown
    TerminalSize shown_size_{};
    std::uint32_t view_column_ = 0;  // the screen cell at the terminal's top left
    std::uint32_t view_row_ = 0;
    std::uint32_t focus_column_ = 0;  // the screen cell that is kept in view
    std::uint32_t focus_row_ = 0;
};

}  // namespace korvane::host
