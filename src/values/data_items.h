// The items of DATA, one after the other: taken from the raw text of the program's DATA
// statements, in line order.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

struct DataPosition {
    std::uint32_t line;    // line index whose DATA is being read, or direct_line: not positioned yet
    std::uint32_t offset;  // of the next item, in the line's text
    bool in_statement;     // the offset lies in a DATA text; otherwise the next DATA is looked for from it
    std::uint32_t end;  // of that DATA text, once a quotation mark in an unquoted item made it known; else 0
};
extern DataPosition data_position;

// READ starts again at the program's first DATA. RUN, NEW, LOAD and CHAIN need it; an edit leaves the
// position where it is.
void reset_data_position();

// Lets the next item be looked for from the start of the line at `index` on.
void move_data_position(std::uint32_t index);

// Takes the next item, without the quotes or blanks around it; false when there is none. Raises nothing.
bool next_data_item(std::string_view& item);

}  // namespace korvane
