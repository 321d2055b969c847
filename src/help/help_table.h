// The built-in language reference.
#pragma once

#include <string_view>

namespace korvane {

struct HelpEntry {
    std::string_view category;
    std::string_view name;  // a keyword, a function, an operator or STARTUP.BAS
    std::string_view text;  // one line: the syntax, " - " and a description
};

// Walks through the entries in the order in which the index shows them, grouped by category. ON and TIMER
// stand in two categories each; a lookup finds the first.
class HelpWalk {
  public:
    HelpWalk();

    // Goes to the next entry, at first to the first one; false behind the last.
    bool next();

    const HelpEntry& entry() const { return entry_; }

  private:
    const char* at_;  // of the packed entries, the next one's first byte
    HelpEntry entry_{};
};

}  // namespace korvane
