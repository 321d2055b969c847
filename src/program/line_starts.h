// The lines at whose start the run loop has something to do: stop at a breakpoint, or show a trace.
//
// The first record of such a line, while it lies in the token cache, holds `handler` in place of what
// executes its statement: whoever gets there without the run loop is led back to it. No other line pays for
// that.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

// Whether something is to be done at the start of the line with this number.
using LineTest = bool (*)(std::uint32_t number);

struct LineStarts {
    Execute handler;          // start-up hands it over, as it does Tokenizer::first_handler
    LineTest has_breakpoint;  // null while there is no breakpoint
    LineTest is_traced;       // null while nothing is traced
};
extern LineStarts line_starts;

inline bool is_watched(std::uint32_t number) {
    return (line_starts.has_breakpoint != nullptr && line_starts.has_breakpoint(number)) ||
           (line_starts.is_traced != nullptr && line_starts.is_traced(number));
}

// Whether a record is the first one of a watched line.
inline bool begins_watched_line(const Token* at) {
    return at->execute == line_starts.handler;
}

}  // namespace korvane
