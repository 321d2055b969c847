// What a session holds, in words: two sessions that did the same are described by the same text.
#pragma once

#include <string>

#include "linked_session.h"

namespace korvane::test {

// Program, variables, control stacks, traps, timers, settings of the screen, open files and the volume's
// content. Trap frames and times are left out.
std::string describe_state(const LinkedSession& session);

// What is on the screen: where the cursor stands, and the pixels as a checksum.
std::string describe_screen();

}  // namespace korvane::test
