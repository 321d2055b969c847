// Natural numbers of a fixed capacity, for the exact decisions of decimal conversion.
#pragma once

#include <array>
#include <cstdint>

namespace korvane {

// A natural number below 2^capacity_bits, in 64-bit limbs, the lowest first. Results must stay below that;
// callers know their bounds. Zero has no limbs, and the highest limb is never zero.
struct BigNatural {
    static constexpr std::uint32_t capacity = 44;
    static constexpr std::uint32_t capacity_bits = 64 * capacity;

    std::array<std::uint64_t, capacity> limbs;
    std::uint32_t size;

    explicit BigNatural(std::uint64_t number) : limbs{number}, size(number == 0 ? 0 : 1) {}

    // this = this * factor + addend.
    void multiply_add(std::uint64_t factor, std::uint64_t addend);

    // this = this * base^exponent.
    void multiply_power(std::uint64_t base, std::uint32_t exponent);

    void shift_left(std::uint32_t bits);

    // this = this - other, which is not larger.
    void subtract(const BigNatural& other);

    bool is_less_than(const BigNatural& other) const;
    bool is_zero() const { return size == 0; }

    // Position of the highest one bit, counted from 1; 0 for zero.
    std::uint32_t bit_length() const;
};

}  // namespace korvane
