// AUTO: prompts with line numbers.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

struct AutoNumbering {
    bool active;
    bool first;  // the next prompt shows the start itself
    std::uint32_t number;
    std::int64_t increment;  // at least 1
};
extern AutoNumbering auto_numbering;

// AUTO [start][,increment]: both are 10 when left out. Raises "Type mismatch" and "Illegal function call".
void do_auto(Cursor& cursor);

// Moves on to the number of the next prompt. False, with AUTO off,
// when it would pass the largest line number.
bool next_auto_number();

}  // namespace korvane
