// The built-in language reference.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace korvane {

inline constexpr std::size_t longest_help_text = 128;  // bytes

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
    HelpWalk(const HelpWalk&) = delete;
    HelpWalk& operator=(const HelpWalk&) = delete;

    // Goes to the next entry, at first to the first one; false behind the last.
    bool next();

    // Its name and text are valid until the walk goes on.
    const HelpEntry& entry() const { return entry_; }

  private:
    const char* at_;  // of the packed entries, the next one's first byte
    HelpEntry entry_{};
    std::array<char, longest_help_text> text_;  // of the entry
};

}  // namespace korvane
