// AddressSanitizer's memmove moves byte by byte, which was half of what the tests under it took: scrolling
// moves megabytes. Its memcpy is as quick as the system's and looks at the same bytes, so moving is made of
// copies that do not overlap.
#include <cstddef>
#include <cstdint>
#include <cstring>

// The names are the linker's, for what --wrap=memmove leads here and for what it leads away from.
extern "C" {
void* __real_memmove(void* to, const void* from, std::size_t size);
void* __wrap_memmove(void* to, const void* from, std::size_t size);
}

namespace {

constexpr std::size_t shortest_copy = 256;  // copies that are shorter than this take longer than moving bytes

}  // namespace

void* __wrap_memmove(void* to, const void* from, std::size_t size) {
    auto* target = static_cast<std::byte*>(to);
    const auto* source = static_cast<const std::byte*>(from);
    const auto to_address = reinterpret_cast<std::uintptr_t>(to);
    const auto from_address = reinterpret_cast<std::uintptr_t>(from);
    const bool upward = to_address < from_address;
    const std::size_t distance = upward ? from_address - to_address : to_address - from_address;
    if (distance >= size) return std::memcpy(to, from, size);
    if (distance < shortest_copy) return __real_memmove(to, from, size);

    // What is copied over has been copied itself: from the front downward in memory, from the back upward.
    for (std::size_t moved = 0; moved < size;) {
        const std::size_t piece = size - moved < distance ? size - moved : distance;
        const std::size_t at = upward ? moved : size - moved - piece;
        std::memcpy(target + at, source + at, piece);
        moved += piece;
    }
    return to;
}
