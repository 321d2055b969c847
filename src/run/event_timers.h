// The eight event timers: TIMER(n) = ms, TIMER(n) ON/OFF, ON TIMER(n) GOSUB.
//
// Timers are no interrupts: the run loop asks between statements of a running program. A due timer becomes
// pending and gets its next due time one interval later; the first pending one that is not busy calls its
// handler like a GOSUB and is busy until the matching RETURN.
#pragma once

#include <cstdint>

#include "platform/clock.h"
#include "program/execution.h"
#include "program/token.h"

namespace korvane {

inline constexpr int event_timer_count = 8;

struct EventTimer {
    std::uint64_t interval;  // milliseconds; 0 when unset
    std::uint64_t due;       // on the clock of clock_milliseconds()
    std::uint32_t handler;   // line number; 0 when there is none
    bool on;
    bool busy;  // its handler is running
    bool pending;
};

struct EventTimers {
    EventTimer timers[event_timer_count];
    std::uint8_t active;  // bit n: timer n is on, has an interval and a handler
    // The time stamp before which no handler can be called, found by a poll that called none. It is 0 from a
    // change of any timer, or of what is busy, to the next such poll.
    std::uint64_t next_call;
};
extern EventTimers event_timers;

// True while a poll would find nothing to do.
inline bool event_timers_rest() {
    return event_timers.active == 0 || read_time_stamp() < event_timers.next_call ||
           !execution.program_running;
}

// For RETURN from a handler: the timer may call it again.
void end_timer_handler(int number);

void clear_event_timers();

// Reads "(" number ")" and gives the timer. Raises "Expected (", "Expected )", "Type mismatch" and "Illegal
// function call" outside 0 to 7. Null after an error.
EventTimer* parse_event_timer(Cursor& cursor);

// Recomputes the active mask after a timer changed.
void update_active_timers();

// Marks due timers and calls the handler of the first one that can be called, for the statement at `record`.
// True when a handler was jumped to; an error may be pending.
bool poll_event_timers(std::uint32_t record);

// The statement TIMER(n) = ms, TIMER(n) ON, TIMER(n) OFF; the cursor stands on the word TIMER.
void do_timer(Cursor& cursor);

// The part of ON TIMER(n) GOSUB line from the word TIMER on.
void do_on_timer(Cursor& cursor);

}  // namespace korvane
