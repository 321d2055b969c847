// What the interpreter has told about itself: whether a program runs, and whether its text is in a file.
#pragma once

#include <cstdint>
#include <string>

#include "platform/listener.h"

namespace korvane::host {

class ProgramState {
  public:
    void hear(Happening happening, std::uint64_t value);

    // The direct mode waits for a line to be typed; else a program or a command is at work.
    bool at_prompt() const { return at_prompt_; }

    // The last line that was handled ended with an error, or what it ran did.
    bool line_failed() const { return line_failed_; }

    // There is a program, and it has changed since it was loaded or saved.
    bool has_unsaved_program() const;

    // A number that is another one for every text of the program.
    std::uint32_t version() const;

    // The program as SAVE writes it; empty when the interpreter's memory holds none that makes sense.
    std::string program_text() const;

  private:
    std::uint64_t store_ = 0;  // address of the ProgramStore
    std::uint32_t kept_version_ = 0;
    bool at_prompt_ = false;
    bool line_failed_ = false;
};

}  // namespace korvane::host
