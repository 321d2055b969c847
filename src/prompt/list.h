// The LIST command.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

// LIST [range | ERL] [NOWAIT]: prints stored lines, a page at a time unless NOWAIT is given. Raises "Expected
// line number", "Line number too large", "No error line", "Illegal function call" and "Syntax Error".
void do_list(Cursor& cursor);

// Prints the line at `index` as LIST and FIND show it: number, a blank, text, and a line end unless the
// cursor is at the left edge already.
void print_program_line(std::uint32_t index);

}  // namespace korvane
