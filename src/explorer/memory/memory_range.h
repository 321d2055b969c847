#pragma once

#include <cstdint>
#include <limits>

namespace korvane {

inline constexpr std::uint64_t last_address = std::numeric_limits<std::uint64_t>::max();

// True when `count` bytes at `address` fit below the top of the address space; the byte at its very top
// counts as inside.
constexpr bool fits_address_space(std::uint64_t address, std::uint64_t count) {
    return count == 0 || count - 1 <= last_address - address;
}

// A range of memory given by its first and last address, both included.
struct MemoryRange {
    std::uint64_t start;
    std::uint64_t end;

    // Bytes in it. Only for a range that passed check_range().
    std::uint64_t count() const { return end - start + 1; }
};

// Prints why a range cannot be used: "End address is below start address." or, for the whole address space,
// whose count does not fit in 64 bits, "Range is too large.". True when it can.
bool check_range(const MemoryRange& range);

// Prints "Address range wraps past FFFFFFFFFFFFFFFF." when `count` bytes at `address` would; true when not.
bool check_wrap(std::uint64_t address, std::uint64_t count);

}  // namespace korvane
