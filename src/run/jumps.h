// Jumps: GOTO, GOSUB, RETURN and the ON forms.
#pragma once

#include "program/token.h"

namespace korvane {

// GOTO takes any numeric expression. Raises "Undefined line number", "Type mismatch".
void do_goto(Cursor& cursor);

// GOSUB likewise; "Out of memory" beyond 128 levels.
void do_gosub(Cursor& cursor);

// RETURN: back to the entry on top ("RETURN without GOSUB"). An entry of the direct line ends the run and the
// rest of that line is not executed (deliberate).
void do_return(Cursor& cursor);

// ON expression GOTO/GOSUB list, ON ERROR GOTO, ON BREAK GOTO, ON TIMER(n) GOSUB.
// A malformed one is "Syntax error".
[[gnu::cold]] void do_on(Cursor& cursor);

// Whether a line number literal is an expression of its own: its target is looked up once.
bool is_lone_literal(const Token* at);

// Jumps to the line whose number is the literal at the cursor, as after THEN and ELSE.
// Remembers where it leads.
void jump_to_literal(Token& literal);

}  // namespace korvane
