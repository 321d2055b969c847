#include "platform/stack.h"

namespace korvane {

Stack stack;

namespace {

#ifdef KORVANE_FREESTANDING
// Of the 128 KiB that the UEFI standard promises, 80 KiB are for us; the rest is for what ran before us and
// for the firmware's own calls beneath us.
constexpr std::uintptr_t usable_bytes = 80 * 1024;
#else
// A native build may carry a sanitizer, whose stack frames are many times larger.
constexpr std::uintptr_t usable_bytes = 2 * 1024 * 1024;
#endif

}  // namespace

void initialize_stack() {
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    stack.limit = here > usable_bytes ? here - usable_bytes : 0;
}

}  // namespace korvane
