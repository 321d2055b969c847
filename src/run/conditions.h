// IF, THEN and ELSE.
//
// A true condition goes on with the statements behind THEN; the run loop executes them like any others, and
// the first ELSE it meets ends the line. A false condition goes on behind the first ELSE of the line,
// whatever the nesting of IFs (deliberate: an ELSE belongs to whichever IF is false first).
#pragma once

#include <cstdint>

#include "program/keywords.h"
#include "program/token.h"

namespace korvane {

// The first ELSE from a token on, or the end of the line.
template <typename AnyToken>
inline AnyToken* find_else(AnyToken* at) {
    while (at->kind != KW_ELSE && at->kind != END_OF_LINE)
        ++at;
    return at;
}

void do_if(Cursor& cursor);

// The most statements that the IF at `opener` may take to the end of its THEN part, the IF and an ELSE
// counted. The keyboard is not looked at in between, for a break there could not be continued: the ELSE would
// have lost its IF.
std::uint32_t statements_of_if(const Token* opener);

// An ELSE met as a statement: the end of a THEN part, or else a "Syntax Error".
void do_else(Cursor& cursor);

}  // namespace korvane
