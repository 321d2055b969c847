// What the run loop and start-up know of the specialised statements, which live one floor above: nothing else
// in this room may name them.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

// What a token's `execute` holds until its statement has been met: specialises it if that can be done, and
// executes it.
std::uint64_t execute_first(Token* at, std::uint64_t budget);

// What the first token of a watched line holds (program/line_starts.h): goes back to the run loop.
std::uint64_t leave_at_line_start(Token* at, std::uint64_t budget);

}  // namespace korvane

namespace korvane::fast {

// Executes statements from `at` on, at most `budget` of them, following jumps and line ends, and gives the
// token at which the run loop goes on. It stops early when the run loop has something to look at: an error or
// a stop, a line that has not been tokenized yet, the end of the program, the start of a watched line, or a
// timer that is due. Needs a current line whose tokens are in the cache, and not the start of a watched one.
Token* run(Token* at, std::uint64_t budget);

// True while no timer asks for a look.
bool may_run();

}  // namespace korvane::fast
