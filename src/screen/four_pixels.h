// Four pixels at a time, in a vector register.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/processor.h"

namespace korvane {

// The firmware promises no more than the alignment of one pixel.
using FourPixels __attribute__((vector_size(16), aligned(4), may_alias)) = std::uint32_t;

inline FourPixels four_of(std::uint32_t pixel) {
    return FourPixels{pixel, pixel, pixel, pixel};
}

inline FourPixels load_four(const std::uint32_t* place) {
    return *reinterpret_cast<const FourPixels*>(place);
}

inline void store_four(std::uint32_t* place, FourPixels pixels) {
    *reinterpret_cast<FourPixels*>(place) = pixels;
}

// The result of a comparison of four pixels, whose lanes are all ones or 0, as bits: bit i is pixel i's.
inline std::uint32_t lane_bits(FourPixels comparison) {
    return word_bits(std::bit_cast<WordVector>(comparison));
}

inline constexpr std::uint32_t no_pixel = 0;
inline constexpr std::uint32_t all_four_pixels = 15;

}  // namespace korvane
