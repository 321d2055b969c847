#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace korvane {

// The index of the first byte of the given value in `count` bytes, or `count`. Runs at memory speed.
std::uint64_t find_byte(const std::uint8_t* bytes, std::uint64_t count, std::uint8_t value);

// The index of the first difference between two blocks of `count` bytes, or `count`.
std::uint64_t find_difference(const std::uint8_t* left, const std::uint8_t* right, std::uint64_t count);

// What a step of a hunt found.
enum class HuntResult : std::uint8_t {
    match,        // the pattern stands at the position
    exhausted,    // it stands nowhere further on
    unavailable,  // whether it does depends on a byte beyond the readable ones
};

// Looks for a pattern of 1 to 256 bytes in a range of memory of which only the first `readable` bytes may be
// read. Positions are offsets in the range; all start positions from 0 to `last_start` are tried in
// ascending order and overlapping matches are found.
class PatternHunt {
  public:
    PatternHunt(const std::uint8_t* memory, std::uint64_t readable, std::uint64_t last_start,
                std::span<const std::uint8_t> pattern)
        : memory_(memory), readable_(readable), last_start_(last_start), pattern_(pattern) {}

    // Goes on to the next match and gives its offset.
    HuntResult next(std::uint64_t& offset);

  private:
    const std::uint8_t* memory_;
    std::uint64_t readable_;
    std::uint64_t last_start_;
    std::span<const std::uint8_t> pattern_;
    std::uint64_t position_ = 0;  // the next start position to be tried
};

}  // namespace korvane
