// Moving and comparing bytes as they are: also those between variables, which AddressSanitizer lets nobody
// touch.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#define KORVANE_FUZZ_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORVANE_FUZZ_ASAN 1
#endif
#endif

namespace korvane::fuzz {

#ifdef KORVANE_FUZZ_ASAN

inline constexpr bool has_address_sanitizer = true;

inline void copy_raw(void* to, const void* from, std::uint64_t count) {
    asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(count) : : "memory");
}

// Of multiples of eight bytes.
__attribute__((no_sanitize("address"))) inline bool equal_raw(const void* left, const void* right,
                                                              std::uint64_t count) {
    const auto* a = static_cast<const std::uint64_t*>(left);
    const auto* b = static_cast<const std::uint64_t*>(right);
    for (std::uint64_t i = 0; i < count / 8; ++i)
        if (a[i] != b[i]) return false;
    return true;
}

#else

inline constexpr bool has_address_sanitizer = false;

inline void copy_raw(void* to, const void* from, std::uint64_t count) {
    std::memcpy(to, from, count);
}
inline bool equal_raw(const void* left, const void* right, std::uint64_t count) {
    return std::memcmp(left, right, count) == 0;
}

#endif

}  // namespace korvane::fuzz
