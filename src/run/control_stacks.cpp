#include "run/control_stacks.h"

#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

ControlStacks control_stacks;

void clear_control_stacks() {
    control_stacks.gosub_count = 0;
    control_stacks.for_count = 0;
    control_stacks.while_count = 0;
}

void forget_direct_line() {
    // Also the free entries, which a FOR may find as it left them.
    for (ForEntry& entry : control_stacks.fors) {
        if (entry.loop.line != direct_line) continue;
        entry.epoch = no_epoch;
        entry.quick_variable = nullptr;
    }
    for (WhileEntry& entry : control_stacks.whiles)
        if (entry.start.line == direct_line) entry.epoch = no_epoch;
    // Machine code for the line is good for the generation, and the next line's statements will lie in its
    // place.
    ++arenas.generation;
}

bool push_gosub(const GosubEntry& entry) {
    if (control_stacks.gosub_count == max_gosub_depth) {
        raise(message::out_of_memory);
        return false;
    }
    control_stacks.gosubs[control_stacks.gosub_count++] = entry;
    return true;
}

void pop_gosub() {
    --control_stacks.gosub_count;
}

}  // namespace korvane
