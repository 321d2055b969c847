// The screen as the browser wants it: what has changed, in the canvas's order of bytes, and its text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "display.h"

namespace korvane::web {

// What has changed since the last update. JavaScript reads it word by word.
struct PictureChange {
    std::uint32_t width;  // of the screen, in pixels
    std::uint32_t height;
    std::uint32_t left;  // of the smallest rectangle that holds all changes
    std::uint32_t top;
    std::uint32_t columns;  // 0 when nothing has changed
    std::uint32_t rows;
    std::uint64_t pixels;  // where the whole screen lies as red, green, blue and 255, row by row
};

// JavaScript reads this word by word too.
struct PictureText {
    std::uint64_t text;  // all rows in UTF-8, with a line feed behind each
    std::uint64_t length;
    std::uint32_t columns;
    std::uint32_t cursor_row;  // from 0
    std::uint32_t cursor_column;
    std::uint32_t has_changed;  // since the last update: not 0 when it has
};

class Picture {
  public:
    const PictureChange& update(const host::Display& display);
    const PictureText& update_text(const host::Display& display);

  private:
    bool read_row(const host::Display& display, std::uint32_t row);

    std::vector<std::uint32_t>
        seen_;  // the framebuffer at the last update, without what lies beside the screen
    std::vector<std::uint32_t> canvas_;  // the same in the canvas's order
    std::vector<bool> stale_;            // of each row of text: it was drawn on since its text was read
    std::vector<std::string> rows_;
    std::string all_rows_;
    PictureChange change_{};
    PictureText text_{};
};

}  // namespace korvane::web
