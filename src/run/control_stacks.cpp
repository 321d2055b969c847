#include "run/control_stacks.h"

#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

ControlStacks control_stacks;

void clear_control_stacks() {
    control_stacks.gosub_count = 0;
    control_stacks.for_count = 0;
    control_stacks.while_count = 0;
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
