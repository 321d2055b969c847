// Memory for machine code that is made while the interpreter runs.
//
// It is taken from the firmware when the first code is made, and never before. Where the firmware has the
// memory attribute protocol, the pages are at no time both writable and executable: whoever makes code writes
// it between begin_writing() and end_writing(), and nothing of it may run meanwhile. Where it has not, the
// processor's page tables must say that such pages may be executed.
//
// A jump into memory that may not be executed is the end of the machine, so whatever is not quite clear is a
// refusal, and a refusal is for good: there is no more native code then, and nothing else changes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace korvane::uefi {
struct MemoryAttributeProtocol;
}

namespace korvane::native {

inline constexpr std::uint64_t first_code_bytes = std::uint64_t{1} << 20;
inline constexpr std::uint64_t most_code_bytes = std::uint64_t{4} << 20;

class ExecutableMemory {
  public:
    // True when there is memory for code. The first call takes it from the firmware, and notes the protocol.
    bool take();

    // So much of the memory that is being filled from a place in it on, as far as it reaches, and what lies
    // in the same pages: this can be written and not executed from now on. Empty when that was refused: what
    // the memory held must then never be entered again.
    std::span<std::byte> begin_writing(std::size_t from = 0, std::size_t bytes = most_code_bytes);

    // True when that may be executed from now on, and not be written where the firmware can see to it. False
    // when that was refused: nothing of the memory may be entered.
    bool end_writing();

    // Goes on with more memory, up to `most_code_bytes` in all: as much again as there is. What has been
    // written stays and may be executed. False when there is no more.
    bool grow();

    // Goes back to the memory that was taken first: nothing of what has been written is wanted any more.
    void start_over() { current_ = 0; }

    // Gives the memory back to the firmware, as it was when it was taken. What cannot be made so stays with
    // nobody: who got it next could not write to it.
    void give_back();

    // Start-up: nothing has been taken.
    void forget() { *this = ExecutableMemory(); }

  private:
    enum class State : std::uint8_t {
        none,     // not asked for yet
        present,  // there, and what the firmware was asked for has been done
        refused,  // for good
    };
    struct Pages {
        std::uint64_t address = 0;
        std::uint64_t bytes = 0;
        std::uint64_t attributes = 0;  // that the firmware gave them
        bool is_proven = false;        // it has once done with them what it said
    };

    bool allocate(std::uint64_t bytes, Pages& pages) const;
    bool read_attributes(Pages& pages) const;
    bool protect(const Pages& pages, std::uint64_t attributes) const;
    void release(const Pages& pages) const;

    std::array<Pages, 3> pages_;                           // those that have not been taken have no bytes
    std::size_t current_ = 0;                              // which of them are being filled
    Pages written_;                                        // between begin_writing() and end_writing()
    uefi::MemoryAttributeProtocol* attributes_ = nullptr;  // null: the firmware has none
    State state_ = State::none;
};
extern ExecutableMemory executable_memory;

}  // namespace korvane::native
