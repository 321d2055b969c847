// Keeps the terminal usable whatever happens to the program that works on it.
#pragma once

#include "terminal_device.h"

namespace korvane::host {

// Runs `session` in a child process on a terminal in full-screen mode and returns its exit status. The
// caller's own process only waits, and puts the terminal right whether the session returns, is ended by a
// signal, or crashes; what the session wrote to standard error is shown afterwards. Ctrl-C is handed to the
// session; one that finds an earlier one not taken for a second ends it, which is a normal way to leave:
// status 0. Other signals give 128 + their number.
int run_guarded(int (*session)(void* argument), void* argument);

// In the session: true once for each Ctrl-C. It cuts a wait for the terminal short.
bool take_interrupt();

}  // namespace korvane::host
