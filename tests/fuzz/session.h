// Random sessions at the prompt: program lines, edits, runs and direct lines
// as a careless person might type them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korvane::fuzz {

// The lines that are typed one after the other.
using Session = std::vector<std::string>;

enum class Taste {
    anything,    // statements, nonsense and bytes that are no text
    repeatable,  // only what shows the same on every machine: no clock, no files, no nonsense
};

// The same seed and taste always give the same session.
Session make_session(std::uint64_t seed, Taste taste);

}  // namespace korvane::fuzz
