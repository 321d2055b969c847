// PRINT, and the pieces of a print list that are functions elsewhere.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t print_zone_width = 14;

// PRINT [#n, | @n[,]] with a list, USING, WRAP or JUSTIFY.
void do_print(Cursor& cursor);

// What TAB(n) and SPC(n) do as items of a print list: send blanks to the output. Columns count from 1; a TAB
// to a column already passed goes to the next line first. n is taken modulo the output width. A negative n
// raises "Illegal function call".
void print_tab(std::int64_t column);
void print_spaces(std::int64_t count);

}  // namespace korvane
