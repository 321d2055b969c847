// How a failure is reported and carried to the run loop.
//
// There are no exceptions. A failure anywhere calls raise(): the message is printed at once and the pending
// flag is set; every handler and evaluation step looks at the flag after each call that can fail and returns
// at once. Back in the run loop the error is trapped by ON ERROR or ends the run, and " in " and the line
// number follow.
//
// The user's break takes the same way out of a statement that waits for keys, and of every expression around
// it: request_break() prints nothing and is no error, but whoever looks at the flag returns at once. Only the
// run loop breaks, at the statement's start.
#pragma once

#include <cstdint>

namespace korvane {

struct ErrorState {
    bool pending;         // an error or a break waits for the run loop; further ones are ignored
    bool is_break;        // which of them: good while `pending` is set
    const char* message;  // text of the last error raised, one of program/messages.h, or null
    std::int64_t code;    // -1 when raised by message, otherwise the number given to ERROR
    std::uint32_t line;   // line number of the last error; 0 in the direct line or when no program runs
};
extern ErrorState errors;

// Raises an error by its message: does nothing while an error is pending. Prints the message on the console,
// never routed to a file or window, with a line end only when no program runs.
void raise(const char* error_message);

// Asks for a break at the start of the statement being executed, which is to return without any further
// effect. Does nothing while an error is pending; message, code and line of the last error stay.
void request_break();

// True while an error or a break waits for the run loop.
inline bool error_pending() {
    return __builtin_expect(errors.pending, false);
}

// True when it is a break: the statement will be executed again as if it had not begun.
inline bool break_requested() {
    return errors.pending && errors.is_break;
}

// What ERR gives: the code of ERROR, 0 when there is no error, the message's table code, else 255.
std::int64_t error_code();

// Forgets message, code and line (RUN does this); the pending flag is left alone.
void forget_error();

}  // namespace korvane
