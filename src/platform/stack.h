// The machine stack: firmware promises no more than 128 KiB and catches no overflow, so whatever recurses
// asks first.
#pragma once

#include <cstdint>

namespace korvane {

struct Stack {
    std::uintptr_t limit;  // recursion stops when the stack has grown down to here
};
extern Stack stack;

// Takes the current depth as the bottom; called once at entry.
void initialize_stack();

// True when no further recursion is safe. What is left then is for the firmware calls of the innermost level.
inline bool stack_exhausted() {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < stack.limit;
}

}  // namespace korvane
