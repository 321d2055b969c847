#include "explorer/memory/byte_search.h"

#include <algorithm>

#include "platform/memory.h"
#include "platform/processor.h"

namespace korvane {
namespace {

// Sixteen bytes at a time in a vector register, four registers in a step: the loops then wait for memory, not
// for the processor.
using Vector __attribute__((vector_size(16), aligned(1), may_alias)) = std::uint8_t;
constexpr std::uint64_t vector_bytes = sizeof(Vector);
constexpr std::uint64_t step_bytes = 4 * vector_bytes;

Vector load(const std::uint8_t* from) {
    return *reinterpret_cast<const Vector*>(from);
}

bool any_set(ByteVector comparison) {
    return byte_bits(comparison) != 0;
}

// True when one of the 64 bytes has the value that fills `needle`.
bool step_holds(const std::uint8_t* bytes, Vector needle) {
    const auto first = (load(bytes) == needle) | (load(bytes + vector_bytes) == needle);
    const auto second =
        (load(bytes + 2 * vector_bytes) == needle) | (load(bytes + 3 * vector_bytes) == needle);
    return any_set(reinterpret_cast<ByteVector>(first | second));
}

bool step_differs(const std::uint8_t* left, const std::uint8_t* right) {
    const auto first =
        (load(left) != load(right)) | (load(left + vector_bytes) != load(right + vector_bytes));
    const auto second = (load(left + 2 * vector_bytes) != load(right + 2 * vector_bytes)) |
                        (load(left + 3 * vector_bytes) != load(right + 3 * vector_bytes));
    return any_set(reinterpret_cast<ByteVector>(first | second));
}

}  // namespace

std::uint64_t find_byte(const std::uint8_t* bytes, std::uint64_t count, std::uint8_t value) {
    const Vector needle = Vector{} + value;
    std::uint64_t i = 0;
    while (count - i >= step_bytes && !step_holds(bytes + i, needle))
        i += step_bytes;
    while (i < count && bytes[i] != value)
        ++i;
    return i;
}

std::uint64_t find_difference(const std::uint8_t* left, const std::uint8_t* right, std::uint64_t count) {
    std::uint64_t i = 0;
    while (count - i >= step_bytes && !step_differs(left + i, right + i))
        i += step_bytes;
    while (i < count && left[i] == right[i])
        ++i;
    return i;
}

HuntResult PatternHunt::next(std::uint64_t& offset) {
    while (position_ <= last_start_) {
        // The first byte of every start position left that may be read.
        const std::uint64_t starts = std::min(readable_, last_start_ + 1);
        if (position_ >= starts) return HuntResult::unavailable;
        position_ += find_byte(memory_ + position_, starts - position_, pattern_[0]);
        if (position_ == starts) continue;
        const std::uint64_t comparable = std::min<std::uint64_t>(pattern_.size(), readable_ - position_);
        const bool equal = compare_bytes(memory_ + position_, pattern_.data(), comparable) == 0;
        if (equal && comparable < pattern_.size()) return HuntResult::unavailable;
        offset = position_++;
        if (equal) return HuntResult::match;
    }
    return HuntResult::exhausted;
}

}  // namespace korvane
