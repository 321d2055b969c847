// Breakpoints: line numbers at which the run loop stops before the line's first statement.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_breakpoints = 64;

struct Breakpoints {
    std::uint32_t count;
    std::uint32_t lines[max_breakpoints];  // line numbers, in the order in which they were set
    bool passing;                          // CONT resumed at the start of `passing_line`: pass it once
    std::uint32_t passing_line;            // line index
};
extern Breakpoints breakpoints;

// Whether a breakpoint is set on the line with this number.
bool has_breakpoint(std::uint32_t line);

// Forgets all breakpoints and the mark that lets CONT pass one (NEW, BREAK CLEAR, start-up).
void clear_breakpoints();

// Forgets only the mark (RUN).
inline void forget_breakpoint_pass() {
    breakpoints.passing = false;
}

// For the run loop, at the start of the line at `line_index` while breakpoints.count is not 0: true when a
// breakpoint is set on it and not passed. Then the run is stopped: CONT may resume at the line's start, the
// stop flag is set and "Breakpoint in n" is printed.
bool breakpoint_hit(std::uint32_t line_index);

// BREAK [LIST] | BREAK CLEAR | BREAK DELETE n [, n ...] | BREAK n [, n ...]. Raises "Undefined line number",
// "Too many breakpoints", "Expected line number" and "Line number too large".
void do_break(Cursor& cursor);

}  // namespace korvane
