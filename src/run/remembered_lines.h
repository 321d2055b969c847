// Places in the program that follow their lines when a statement fails after it has changed the program.
//
// Whatever remembers a place, a stack or a trap, does so by the index of its line, and an edit leaves that as
// it is: a place older than the program is taken literally. A statement of the program itself that fails
// half-way, however, is followed by more of the same run: what it changed must not lead RETURN, NEXT, RESUME
// or READ to other lines than those that they came from.
#pragma once

#include <cstdint>

#include "run/control_stacks.h"
#include "run/traps.h"

namespace korvane {

// Notes the numbers of the remembered lines, before the program is changed. Lives as long as the statement
// that changes it, in which nothing is put on the stacks.
class RememberedLines {
  public:
    RememberedLines();

    // After the change failed: every place moves to the line that now has its line's number, the record
    // within it being kept, or becomes one that does not exist. The current line, for ERL and RESUME, does so
    // too. READ goes on with the first DATA behind a line that is gone. The stacks may have been emptied by
    // then. Nothing moves when nothing was changed, or by a statement typed at the keyboard: that is an edit.
    void follow() const;

  private:
    // The current line and the breakpoint that CONT passed, beside the stacks.
    static constexpr std::uint32_t capacity =
        2 + max_gosub_depth + max_for_depth + max_while_depth + max_trap_frames;

    void follow_data_line() const;

    std::uint32_t changes_;
    std::uint32_t line_count_;
    std::uint64_t data_number_;        // of READ's line
    std::uint32_t numbers_[capacity];  // in the order of the visit
};

}  // namespace korvane
