// How the hosted firmware ends when it cannot be what it was asked to be.
#pragma once

#include <string_view>

namespace korvane::host {

// Tells why, and ends the program.
[[noreturn]] void give_up(std::string_view reason);

}  // namespace korvane::host
