// Line numbers inside the text of a program line: where they stand, and how RENUM rewrites them.
//
// A reference is a decimal number without point and exponent that follows GOTO or GOSUB (a list of them,
// separated by commas), THEN, ELSE, RESTORE, RESUME (0 excepted) or ERL with a comparison operator. Text in
// double quotes and remarks hold none. Words and numbers are found as the tokenizer finds them, so that
// &HATHEN 8 is &HA and THEN 8, and 1E1GOTO 6 is 1E1 and GOTO 6.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace korvane {

// The new number of the line that has the number `line`, or `line` itself when there is no such line.
using NewLineNumber = std::uint32_t (*)(std::uint32_t line, const void* context);

enum class Rewriting {
    done,
    text_too_long,  // the rewritten text has more than 244 characters
    out_of_space,   // it does not fit in the buffer
};

// Copies the text of a line, which a zero follows, to `buffer` with every reference replaced, and counts its
// bytes in `length`. A number that names no line stays as it is written.
Rewriting rewrite_line_references(std::string_view text, NewLineNumber new_number, const void* context,
                                  std::span<std::uint8_t> buffer, std::uint32_t& length);

}  // namespace korvane
