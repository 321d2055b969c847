// Built-in functions of the system: memory, arenas, clock, errors, command line, landmarks.
#pragma once

#include "numbers/value.h"
#include "program/token.h"

namespace korvane {

// Memory.
Value function_peek(const Value& address);
Value function_peek16(const Value& address);
Value function_peek32(const Value& address);
Value function_peek64(const Value& address);
Value function_fre(const Value& ignored);      // free bytes of the data arena as an INT64
Value function_varptr(Cursor& cursor);         // a new scalar is created (deliberate)
Value function_korvaneadr(const Value& name);  // "Unknown landmark"

// System variables. Addresses are INT64.
Value variable_lomem();
Value variable_himem();
Value variable_freebot();
Value variable_freetop();
Value variable_gramaxx();
Value variable_gramaxy();
Value variable_grapitch();
Value variable_scrnadr();
Value variable_txtmaxx();
Value variable_txtmaxy();

// Clock. TIMER counts seconds since the processor's reset, deliberately: its base is never moved.
Value function_timer_bare();
Value function_timer(const Value& number);  // interval of an event timer in milliseconds, 0 when unset
Value function_date();                      // MM-DD-YYYY
Value function_time();                      // HH:MM:SS

// Errors and the command line.
Value function_err();
Value function_erl();
Value function_commandlineargc();
Value function_commandlinearg_bare();                // all arguments, joined by one blank
Value function_commandlinearg(const Value& number);  // the n-th from 0; empty past the last

}  // namespace korvane
