// Where a specialised statement leads: to the statement behind it, past the end of its line
// where that is possible.
//
// The end record of a line keeps the next line's first token once control has passed there. From then on
// whoever leads to the end record may lead to that token at once, unless a THEN part ends there: then the end
// record has to say that it is over. An IF whose THEN part nothing in the line can ask about is no such
// hindrance, and behind an ELSE no THEN part is open.
#pragma once

#include "program/token.h"

namespace korvane::fast {

template <typename AnyToken>
inline AnyToken* end_of_line(AnyToken* at) {
    while (at->kind != END_OF_LINE)
        ++at;
    return at;
}

// The statement that follows one of the current line that ended at `end`.
Token* link_behind(Token* end);

// The same for the assignment at `at`, which may be a lone THEN part in front of an ELSE.
Token* link_behind_assignment(const Token* at, Token* end);

// The statement to which a jump to `at` leads; a jump leaves a THEN part wherever it goes.
Token* link_to(Token* at);

// For the end record of the current line, when the next line's tokens have become known: leads the statements
// and the open loops that lead there on to the next line.
void link_line(Token* end);

}  // namespace korvane::fast
