#include "values/mbf.h"

#include <algorithm>
#include <bit>

#include "program/errors.h"
#include "program/messages.h"

namespace korvane {
namespace {

constexpr std::int32_t lowest_field = 895;        // binary64 exponent field of 2^-128
constexpr std::int32_t overflow_field = 1150;     // of 2^127
constexpr std::int32_t field_to_exponent = -894;  // field 895 is MBF exponent 1
constexpr std::uint64_t fraction_mask = (std::uint64_t{1} << 52) - 1;
constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;

std::int32_t field_of(std::uint64_t bits) {
    return static_cast<std::int32_t>(bits >> 52 & 0x7FF);
}

bool fail() {
    raise(message::overflow);
    return false;
}

// Stores the image of a binary64 number within MBF's range: its sign, and the exponent and the upper bits of
// the fraction, as many as the image has room for.
void store(std::uint64_t bits, std::span<std::uint8_t> image) {
    // The fraction with the sign above it, left-aligned.
    std::uint64_t mantissa = (bits & sign_bit) | (bits & fraction_mask) << 11;
    const std::size_t last = image.size() - 1;
    image[last] = static_cast<std::uint8_t>(field_of(bits) + field_to_exponent);
    for (std::size_t i = last; i-- > 0; mantissa <<= 8)
        image[i] = static_cast<std::uint8_t>(mantissa >> 56);
}

// The number of an image.
double load(std::span<const std::uint8_t> image) {
    const std::size_t last = image.size() - 1;
    if (image[last] == 0) return 0;
    std::uint64_t mantissa = 0;
    for (std::size_t i = 0; i < last; i++)
        mantissa |= static_cast<std::uint64_t>(image[i]) << (64 - 8 * (last - i));
    const bool negative = (mantissa & sign_bit) != 0;
    mantissa |= sign_bit;  // the implied leading bit takes the sign's place
    // At most 56 bits, of which the lowest 8 of the word are zero:
    // exact as a signed integer, rounded once here.
    const auto integer = static_cast<double>(static_cast<std::int64_t>(mantissa >> 8));
    const std::uint64_t field = image[last] + std::uint64_t{1023 - 129 - 55};
    const double magnitude = integer * std::bit_cast<double>(field << 52);
    return negative ? -magnitude : magnitude;
}

}  // namespace

bool to_mbf_single(double number, std::span<std::uint8_t, 4> image) {
    auto bits = std::bit_cast<std::uint64_t>(number);
    if (field_of(bits) < lowest_field) {
        std::fill(image.begin(), image.end(), std::uint8_t{0});
        return true;
    }
    if (field_of(bits) >= overflow_field) return fail();
    // Rounds the fraction to its upper 23 bits; a carry out of it goes on into the exponent, as it must.
    constexpr std::uint64_t unit = std::uint64_t{1} << 29;
    bits += unit / 2 - 1 + ((bits & unit) != 0 ? 1 : 0);
    if (field_of(bits) >= overflow_field) return fail();
    store(bits, image);
    return true;
}

bool to_mbf_double(double number, std::span<std::uint8_t, 8> image) {
    const auto bits = std::bit_cast<std::uint64_t>(number);
    if (field_of(bits) < lowest_field) {
        std::fill(image.begin(), image.end(), std::uint8_t{0});
        return true;
    }
    if (field_of(bits) >= overflow_field) return fail();
    store(bits, image);
    return true;
}

double from_mbf_single(std::span<const std::uint8_t, 4> image) {
    return load(image);
}

double from_mbf_double(std::span<const std::uint8_t, 8> image) {
    return load(image);
}

}  // namespace korvane
