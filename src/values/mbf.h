// Microsoft Binary Format: the floating-point images that MKS$ and MKD$ make and CVS and CVD read.
//
// The last byte is the exponent: 0 means zero, otherwise the binary exponent biased by 128 of a mantissa read
// as 0.1xxx. The byte before it holds the sign in bit 7 and the top 7 mantissa bits below the implied leading
// 1; the bytes before that the rest of the mantissa, least significant first.
#pragma once

#include <cstdint>
#include <span>

namespace korvane {

// Makes the 4-byte image: the mantissa is rounded to its 24 bits, to nearest and ties to even. A magnitude
// below 2^-128 becomes zero. Returns false and raises "Overflow" when the rounded magnitude is 2^127 or more,
// an infinity or a NaN.
bool to_mbf_single(double number, std::span<std::uint8_t, 4> image);

// Makes the 8-byte image, which is exact; ranges and errors as above.
bool to_mbf_double(double number, std::span<std::uint8_t, 8> image);

// The number of a 4-byte image; exact.
double from_mbf_single(std::span<const std::uint8_t, 4> image);

// The number of an 8-byte image, its 56-bit mantissa rounded to nearest, ties to even.
double from_mbf_double(std::span<const std::uint8_t, 8> image);

}  // namespace korvane
