// Where a specialised statement leads: to the statement behind it, past the end of its line where that
// is possible.
//
// The end record of a line keeps the next line's first token once control has passed there. From then on
// whoever leads to the end record may lead to that token at once, unless a THEN part ends there: then the end
// record has to say that it is over. An IF whose THEN part nothing in the line can ask about is no such
// hindrance, and behind an ELSE no THEN part is open. Until then the end record notes who leads to it, to
// lead them on when it can.
#pragma once

#include "program/token.h"

namespace korvane::fast {

template <typename AnyToken>
inline AnyToken* end_of_line(AnyToken* at) {
    while (at->kind != END_OF_LINE)
        ++at;
    return at;
}

// Each of these gives the statement for a record of the current line to lead to: the IF at `from` as its
// `when_false`, any other record as its `after` (fast/records.h).

// The statement at `to`, past a line's end. Not for what goes on in a THEN part: a jump leaves it.
Token* link_to(const Token* from, Token* to);

// The statement that follows one that ended at `end`.
Token* link_behind(const Token* from, Token* end);

// The same for the assignment at `at`, whose "=" leads on: it may be a lone THEN part in front of an ELSE.
Token* link_behind_assignment(const Token* at, const Token* equals, Token* end);

// The first token of the line that a number literal names, which the literal keeps; null when the line does
// not exist or is left to the general handler, or when it does not stay in the token cache.
[[gnu::cold]] Token* target_of(Token* literal);

// The line that a literal in the list of an ON leads to; null when the general handler has to find it. What
// that has remembered need not be in the cache.
Token* listed_line(Token* literal);

// For the end record of the current line, when the next line's tokens have become known: leads on who
// leads there.
void link_line(Token* end);

}  // namespace korvane::fast
