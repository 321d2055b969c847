// Running: the run loop, what starts and ends a run, and the break.
#pragma once

#include <cstdint>

#include "program/execution.h"
#include "program/token.h"

namespace korvane {

// Executes from the current position (execution.line, execution.record) until the program ends, the stop flag
// is set or an error stays pending.
void run_loop();

// Everything that belongs to one run and not to the program or its variables: control stacks, DATA position,
// event timers, traps, error state, can-continue and break marks. RUN and CHAIN need it.
void reset_run_state();

// RUN: clears variables and run state, closes files, switches text window, viewport and logical coordinates
// off, and runs the program from its first line. Prints " in N" or "Break in N" when it ends so.
void run_program();

// CHAIN: goes on with the first statement of the line at `index`. Within a running program this is a jump.
// Typed at the keyboard it turns the direct line into a run:
// the program runs from there and ends like RUN does.
void chain_to_line(std::uint32_t index);

// Runs from the current position with the program-running flag on, and reports how the run ended: " in N"
// behind a pending error. CONT uses it.
void run_from_here();

void do_end(Cursor& cursor);
void do_stop(Cursor& cursor);
void do_clear(Cursor& cursor);
void do_new(Cursor& cursor);  // inside a program or after ":": the program stays (deliberate)

}  // namespace korvane
