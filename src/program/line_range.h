// Line numbers and line ranges as the editing commands write them: numeric literals, never expressions.
#pragma once

#include <cstdint>
#include <optional>

#include "program/execution.h"
#include "program/messages.h"
#include "program/token.h"

namespace korvane {

struct LineRange {
    std::uint32_t first = 0;
    std::uint32_t last = max_line_number;
};

// What a command says of a faulty range. The forms agree, the messages do not.
struct LineRangeMessages {
    const char* out_of_range;    // a number outside 0 to 4,294,967,294
    const char* missing_number;  // "-" with a number on neither side
    const char* malformed;       // neither a number nor "-"
};

// DELETE, and CHAIN's DELETE.
inline constexpr LineRangeMessages delete_range_messages{message::illegal_function_call,
                                                         message::syntax_error, message::syntax_error};

// The line number that a NUMBER token stands for, floats rounded; nothing when it lies outside 0 to
// 4,294,967,294. Raises nothing.
std::optional<std::uint32_t> line_number_of(const Token& number);

// Reads the numeric literal at the cursor as a line number. Raises `not_a_number` when there is none and
// `out_of_range` when its value is no line number.
std::optional<std::uint32_t> read_line_number(Cursor& cursor, const char* not_a_number,
                                              const char* out_of_range);

// Reads n, n-, n-m or -m into `range`. Raises one of the messages and gives false on a fault. A reversed
// range is given as written: the callers look at it after what follows it.
bool read_line_range(Cursor& cursor, const LineRangeMessages& messages, LineRange& range);

// Raises "Illegal function call" and gives false when the range ends below its start.
bool check_line_range(const LineRange& range);

// Removes the stored lines with a number in the range. Raises "Illegal function call" when there is none.
void delete_line_range(const LineRange& range);

}  // namespace korvane
