// Colours that a program has given as numbers.
#pragma once

#include <cstdint>
#include <optional>

namespace korvane {

// The colour that screen/colour.h found, or 0 and "Illegal function call" when the numbers stand for none.
std::uint32_t require_colour(std::optional<std::uint32_t> colour);

}  // namespace korvane
