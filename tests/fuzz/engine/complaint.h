// What a session must never lead to.
#pragma once

#include <string_view>

namespace korvane::fuzz {

// Says what is wrong and ends the program, so that whoever made the input keeps it.
[[noreturn]] void complain(std::string_view what);

}  // namespace korvane::fuzz
