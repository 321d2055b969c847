// Every limit of the system, with the ways that lead to it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::fuzz {

// One way to a limit: what is typed for a quantity, and what must come of it. It is tried with one less than
// the limit, with the limit, and with one more.
struct Reach {
    // Lines with their quantity, as limits.cpp tells; what the last one says is looked at.
    std::string_view typed;
    // What it says within the limit and beyond; when that depends on more, `says` tells instead.
    std::string_view beyond;
    std::string_view within = "";
    bool least = false;                       // the limit is the least quantity instead of the greatest
    std::string_view file = "";               // the content of F.BAS, with its quantity
    void (*prepare)(std::int64_t) = nullptr;  // something else of the machine
    std::string (*says)(std::int64_t) = nullptr;
    std::string (*shows)(std::int64_t) = nullptr;  // a row of the screen; behind "!", one that is not there
    bool (*holds)(std::int64_t) = nullptr;         // something else
};

struct Limit {
    std::string_view name;
    std::int64_t value;
    std::vector<Reach> reaches;
    std::string_view elsewhere = "";  // where it is tested when nothing can be typed for it, or why it cannot
};

// Of lines, programs, variables and values; of the screen, files, the machine explorer and the start.
std::vector<Limit> limits_of_programs();
std::vector<Limit> limits_of_devices();

}  // namespace korvane::fuzz
