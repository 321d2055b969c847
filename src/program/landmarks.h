#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace korvane {

// A named address of something that matters on the running machine or inside the interpreter.
struct Landmark {
    const char* name;
    const char* description;

    // Where it is at this moment, or nothing when this machine does not have it.
    std::optional<std::uint64_t> (*address)();
};

// All landmarks in the order in which they are listed.
std::span<const Landmark> landmarks();

// Looks a name up, compared exactly (names are upper case). STRINGTOP is a second name for FREETOP that is
// not listed, deliberately. False when there is no such landmark or the machine does not have it; `address`
// is then left alone.
bool find_landmark(std::string_view name, std::uint64_t& address);

// The landmark at or closest below an address; of several at the same address the one listed first. Null
// when there is none. `landmark_address` receives its address.
const Landmark* nearest_landmark(std::uint64_t address, std::uint64_t& landmark_address);

}  // namespace korvane
