// The text on the screen of a machine, as a person would read it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "display.h"

namespace korvane::transcript {

struct CellPosition {
    std::uint32_t row;  // from 0
    std::uint32_t column;

    friend bool operator==(const CellPosition&, const CellPosition&) = default;
};

struct ScreenText {
    std::vector<std::string> rows;  // UTF-8, trailing blanks trimmed; the cursor's cell is a blank
    std::uint32_t columns = 0;
    std::optional<CellPosition> cursor;  // the line editor's full block

    // One past the last row that is not blank.
    std::size_t used_rows() const;
};

// Reads all cells. A cell of one colour is a blank when that is the paper of its neighbours or the screen's
// most frequent colour, else a full block. With `find_cursor` the last full block is taken as the cursor.
ScreenText read_screen(const host::Display& display, bool find_cursor);

}  // namespace korvane::transcript
