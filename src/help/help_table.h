// The built-in language reference as a table.
#pragma once

#include <array>

namespace korvane {

struct HelpEntry {
    const char* category;
    const char* name;  // a keyword, a function, an operator or STARTUP.BAS
    const char* text;  // one line: the syntax, " - " and a description
};

extern const std::array<HelpEntry, 179> help_table;

}  // namespace korvane
