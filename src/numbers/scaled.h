// Integers times powers of ten, as binary numbers of 64 bits and a rest.
#pragma once

#include <cstdint>

namespace korvane {

// A positive number as quotient * 2^exponent, the quotient with its highest bit set,
// plus a rest below one unit.
struct Scaled {
    std::uint64_t quotient;
    std::int32_t exponent;
    bool has_rest;
};

// The least and the greatest power that scale_quickly() takes.
inline constexpr std::int32_t lowest_scale = -351;
inline constexpr std::int32_t highest_scale = 323;

// head * 10^power, for a head that is not 0, by one multiplication with a power of ten of 64 bits, or 128.
// The quotient's last ten bits may be wrong, but not how a format of fewer than 54 bits rounds. A
// quotient of 0 when the error could reach it, which it does for one head in some 2^60: then long division
// has to decide.
Scaled scale_quickly(std::uint64_t head, std::int32_t power);

}  // namespace korvane
