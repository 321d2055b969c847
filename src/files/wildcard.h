// Wildcard patterns of FILES.
#pragma once

#include <string_view>

namespace korvane {

// True when the whole name matches the pattern. "?" stands for one character, "*" for any run of characters,
// and "*.*" at the end of a pattern for any run too, so that it also matches names without a dot. The letters
// a to z match A to Z; other bytes match themselves.
// Takes time proportional to the product of the lengths at most.
bool matches_wildcard(std::string_view pattern, std::string_view name);

}  // namespace korvane
