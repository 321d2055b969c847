// PRINT WRAP and PRINT JUSTIFY: a text broken into lines at word boundaries.
#pragma once

#include <array>
#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_line_words = 256;

// The line being collected while a paragraph is printed; meaningless otherwise.
struct Paragraph {
    std::array<const std::uint8_t*, max_line_words> words;  // start of each pending word, in the text
    std::array<std::uint32_t, max_line_words> lengths;      // its bytes
    std::uint32_t count;                                    // pending words
    std::uint64_t total_length;                             // of their bytes
    std::uint32_t line_width;                               // columns of the line being collected
    std::uint32_t later_width;                              // columns of every line after the first
    bool justify;  // full lines are spread to their width; the last line of a paragraph never is
};
extern Paragraph paragraph;

// True when the cursor stands on the word WRAP or JUSTIFY followed by an operand; any other continuation
// means that the word is an ordinary variable in a print list.
bool is_paragraph(const Token* at);

// The rest of PRINT WRAP [width,] text$ or PRINT JUSTIFY [width,] text$, from its word on. Raises "Illegal
// function call" for a width outside 1 to 65535, "Expected ,", "Type mismatch", and "Syntax Error" for what
// follows the text.
void print_paragraph(Cursor& cursor);

}  // namespace korvane
