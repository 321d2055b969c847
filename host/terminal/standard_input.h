// Standard input as keys, taken one by one.
#pragma once

#include <optional>
#include <string>

#include "platform/uefi.h"

namespace korvane::host {

// Characters of code page 437 are keys by their look, others a question mark, tabs blanks. Line ends of all
// systems are one Enter each; the last line needs none.
class StandardInput {
  public:
    // The next key; nothing at the end. Waits for it.
    std::optional<uefi::InputKey> next();

    // The same without waiting: nothing also when none has come yet.
    std::optional<uefi::InputKey> next_if_there();

  private:
    void read_more();
    std::optional<uefi::InputKey> take();

    std::string pending_;  // bytes that have been read
    bool at_end_ = false;
    bool line_begun_ = false;
    bool after_return_ = false;  // the last key came from a carriage return; a line feed belongs to it
};

}  // namespace korvane::host
