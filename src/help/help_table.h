// The built-in language reference as a table.
#pragma once

#include <array>
#include <string_view>

namespace korvane {

struct HelpEntry {
    std::string_view category;
    std::string_view name;  // a keyword, a function, an operator or STARTUP.BAS
    std::string_view text;  // one line: the syntax, " - " and a description
};

extern const std::array<HelpEntry, 179> help_table;

}  // namespace korvane
