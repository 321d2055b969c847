#include "steps.h"

#include <algorithm>

#include "complaint.h"

namespace korvane::fuzz {

namespace {

std::uint64_t steps = 0;
std::uint64_t most = 0;

}  // namespace

void note_look() {
    most = std::max(most, steps);
    steps = 0;
}

std::uint64_t most_steps() {
    return most;
}

void forget_steps() {
    steps = most = 0;
}

}  // namespace korvane::fuzz

#ifdef KORVANE_COUNTS_STEPS
// Called by the code that the compiler has made for each piece.
extern "C" __attribute__((no_sanitize("coverage", "address", "undefined"))) void __sanitizer_cov_trace_pc() {
    if (++korvane::fuzz::steps <= korvane::fuzz::most_steps_without_look) return;
    korvane::fuzz::steps = 0;
    korvane::fuzz::complain("too many steps without a look at the keyboard");
}
#endif
