// Moving, filling and comparing bytes.
//
// The image has no C library: memory.cpp supplies the four functions that the compiler itself calls. The rest
// of the code uses these names, which take byte counts and accept null pointers with a count of zero.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korvane {

// Copies between places that do not overlap.
inline void copy_bytes(void* destination, const void* source, std::size_t count) {
    if (count != 0) __builtin_memcpy(destination, source, count);
}

// Copies between places that may overlap.
inline void move_bytes(void* destination, const void* source, std::size_t count) {
    if (count != 0) __builtin_memmove(destination, source, count);
}

inline void fill_bytes(void* destination, std::uint8_t byte, std::size_t count) {
    if (count != 0) __builtin_memset(destination, byte, count);
}

// Negative, zero or positive by the first difference, as unsigned bytes.
inline int compare_bytes(const void* left, const void* right, std::size_t count) {
    return count == 0 ? 0 : __builtin_memcmp(left, right, count);
}

// Reads or writes a datum at an address of any alignment.
template <typename Datum>
inline Datum read_unaligned(const void* address) {
    Datum datum;
    __builtin_memcpy(&datum, address, sizeof datum);
    return datum;
}

template <typename Datum>
inline void write_unaligned(void* address, Datum datum) {
    __builtin_memcpy(address, &datum, sizeof datum);
}

}  // namespace korvane
