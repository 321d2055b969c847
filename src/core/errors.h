// How a failure is reported and carried to the run loop.
//
// There are no exceptions. A failure anywhere calls raise(): the message is printed at once and the pending
// flag is set; every handler and evaluation step looks at the flag after each call that can fail and returns
// at once. Back in the run loop the error is trapped by ON ERROR or ends the run, and " in " and the line
// number follow.
#pragma once

#include <cstdint>

namespace korvane {

struct ErrorState {
    bool pending;         // an error waits for the run loop; further ones are ignored
    const char* message;  // text of the last error raised, one of core/messages.h, or null
    std::int64_t code;    // -1 when raised by message, otherwise the number given to ERROR
    std::uint32_t line;   // line number of the last error; 0 in the direct line or when no program runs
};
extern ErrorState errors;

// Raises an error by its message: does nothing while an error is pending. Prints the message on the console,
// never routed to a file or window, with a line end only when no program runs.
void raise(const char* error_message);

inline bool error_pending() {
    return __builtin_expect(errors.pending, false);
}

// What ERR gives: the code of ERROR, 0 when there is no error, the message's table code, else 255.
std::int64_t error_code();

// Forgets message, code and line (RUN does this); the pending flag is left alone.
void forget_error();

}  // namespace korvane
