// Where a statement's own reading of its tokens ends, found by its grammar alone: statements may stand side
// by side without a colon, so a colon says nothing about that.
#pragma once

#include "program/token.h"

namespace korvane::fast {

// The token behind the statement at `at`, or null when it is none of those that have specialised forms, an
// IF, or not well formed.
const Token* end_of_statement(const Token* at);

// Whether the THEN part of the IF at `at` is one statement that nothing can ask about: it ends the line, or
// it is an assignment in front of an ELSE. It leads out of the line at once and no THEN part is open in it.
bool then_part_is_lone(const Token* at);

// Whether the statement at `at`, in the current line, is such an assignment in front of an ELSE: right behind
// THEN, for behind a colon RESUME NEXT may come to it without its IF.
bool is_lone_assignment(const Token* at);

}  // namespace korvane::fast
