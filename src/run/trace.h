// TRON's line trace and TRACE's variable watches, shown by the run loop at the start of every program line.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_watches = 32;

struct Trace {
    bool lines_on;             // TRON
    std::uint32_t first_line;  // traced range of line numbers, inclusive
    std::uint32_t last_line;
    std::uint32_t watch_count;
    char watches[max_watches][name_capacity];  // zero-terminated names of scalar variables
};
extern Trace trace;

// TROFF and an empty watch list (start-up, NEW).
void clear_trace();

// Whether print_trace() shows anything for the line with this number.
bool is_traced(std::uint32_t line_number);

// Whether print_trace() has anything to look at: the run loop's one test.
inline bool trace_active() {
    return trace.lines_on || trace.watch_count != 0;
}

// For the run loop, before the first statement of the line with this number: "[n]" when it is traced, then
// " {A=1 B$=<undefined>}" when variables are watched. No line end.
void print_trace(std::uint32_t line_number);

// TRON [n[-m]]: raises "Illegal function call", and "Syntax Error" for what is no number.
void do_tron(Cursor& cursor);

// What TROFF does.
void troff();
void do_troff(Cursor& cursor);

// TRACE | TRACE OFF | TRACE variable [, variable ...]: raises "Expected variable", "TRACE supports scalar
// variables" and "Too many variables".
void do_trace(Cursor& cursor);

}  // namespace korvane
