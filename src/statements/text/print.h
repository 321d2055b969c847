// PRINT, and what the functions of a print list send.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t print_zone_width = 14;

// PRINT [#n, | @n[,]] with a list, USING, WRAP or JUSTIFY.
void do_print(Cursor& cursor);

// What TAB(n) and SPC(n) do wherever they are evaluated: they send blanks to the output. Columns count from
// 1, modulo the output width; TAB(0) is the first one too, and a column already passed is taken in the next
// line. SPC counts modulo the width. A negative n raises "Illegal function call".
void print_tab(std::int64_t column);
void print_spaces(std::int64_t count);

}  // namespace korvane
