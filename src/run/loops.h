// Loops: FOR and NEXT, WHILE and WEND.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

struct ForEntry;
struct VariableEntry;

// FOR var = start TO limit [STEP step]. A loop that has nothing to do is passed over to behind its NEXT.
// Raises "Expected variable", "Expected =", "Expected TO", "Type mismatch", "Out of memory" beyond 64 levels,
// "Illegal function call" for a NaN step. Re-entering an unfinished FOR stacks another entry (deliberate).
void do_for(Cursor& cursor);

// Whether a loop's variable is past its limit in the direction of the step, which ends the loop. A zero step
// counts as upward.
template <typename Number>
inline bool past_limit(std::int32_t step_sign, Number value, Number limit) {
    return step_sign < 0 ? value < limit : value > limit;
}

// Fills the entry of a loop from its evaluated parts and the place behind its FOR.
void fill_for_entry(ForEntry& entry, const char* name, VariableEntry& variable, const Value& limit,
                    const Value& step, Position body);

// The same for an entry whose loop is the one described by what is in it already: only the bounds are new.
void set_loop_bounds(ForEntry& entry, const Value& limit, const Value& step);

// Finds the control variable of an open loop again when variables may have moved; false when it is gone.
bool find_control_variable(ForEntry& entry);

// NEXT [var]: one variable at most. Raises "NEXT without FOR" and "Overflow".
void do_next(Cursor& cursor);

// WHILE condition. A false one continues behind its WEND; without one the program ends silently (deliberate).
void do_while(Cursor& cursor);

// WEND: back to the WHILE ("WEND without WHILE").
void do_wend(Cursor& cursor);

}  // namespace korvane
