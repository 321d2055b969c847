// The interpreter on the quick firmware, on a stack of its own. It is started once; then every input is
// played from the same moment.
#pragma once

#include <ucontext.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "firmware.h"
#include "saved_memory.h"

namespace korvane::fuzz {

class Machine {
  public:
    Machine();
    Machine(const Machine&) = delete;

    Firmware& firmware() { return firmware_; }

    // Starts the interpreter, up to its first stop.
    Stop start();
    // Lets it go on after it has waited.
    Stop go_on();

    // The moment to which put_back() leads back: before the start, or while the interpreter waits.
    void save();
    void put_back();

  private:
    static void run_on_own_stack();

    void stop(Stop why);
    Stop resume();

    Firmware firmware_;
    SavedMemory stack_;
    std::vector<SavedMemory> variables_;
    bool started_ = false;
    ucontext_t host_context_{};
    ucontext_t image_context_{};
    Stop stop_ = Stop::returned;

    // Of the saved moment.
    bool saved_started_ = false;
    ucontext_t saved_context_{};
    std::uint64_t saved_stack_from_ = 0;
    std::vector<std::uint8_t> saved_stack_;
    std::vector<std::uint8_t> saved_shadow_;  // AddressSanitizer's notes about the stack
    void* host_fiber_ = nullptr;
    const void* host_stack_ = nullptr;
    std::size_t host_stack_size_ = 0;
};

// The one machine of this program.
extern Machine* machine;

}  // namespace korvane::fuzz
