#include "numbers/big_natural.h"

#include <bit>

namespace korvane {

void BigNatural::multiply_add(std::uint64_t factor, std::uint64_t addend) {
    unsigned __int128 carry = addend;
    for (std::uint32_t i = 0; i < size; i++) {
        carry += static_cast<unsigned __int128>(limbs[i]) * factor;
        limbs[i] = static_cast<std::uint64_t>(carry);
        carry >>= 64;
    }
    if (carry != 0) limbs[size++] = static_cast<std::uint64_t>(carry);
}

void BigNatural::multiply_power(std::uint64_t base, std::uint32_t exponent) {
    // As many factors at once as fit in a limb.
    std::uint64_t block = 1;
    while (exponent != 0) {
        if (block > ~std::uint64_t{0} / base) {
            multiply_add(block, 0);
            block = 1;
        }
        block *= base;
        exponent--;
    }
    multiply_add(block, 0);
}

void BigNatural::shift_left(std::uint32_t bits) {
    if (size == 0) return;
    const std::uint32_t whole_limbs = bits / 64;
    const std::uint32_t rest = bits % 64;
    for (std::uint32_t i = size; i-- > 0;)
        limbs[i + whole_limbs] = limbs[i];
    for (std::uint32_t i = 0; i < whole_limbs; i++)
        limbs[i] = 0;
    size += whole_limbs;
    if (rest == 0) return;
    std::uint64_t carry = 0;
    for (std::uint32_t i = whole_limbs; i < size; i++) {
        const std::uint64_t limb = limbs[i];
        limbs[i] = limb << rest | carry;
        carry = limb >> (64 - rest);
    }
    if (carry != 0) limbs[size++] = carry;
}

void BigNatural::subtract(const BigNatural& other) {
    std::uint64_t borrow = 0;
    for (std::uint32_t i = 0; i < size; i++) {
        const std::uint64_t right = i < other.size ? other.limbs[i] : 0;
        const std::uint64_t left = limbs[i];
        limbs[i] = left - right - borrow;
        borrow = left < right || (left == right && borrow != 0) ? 1 : 0;
    }
    while (size != 0 && limbs[size - 1] == 0)
        size--;
}

bool BigNatural::is_less_than(const BigNatural& other) const {
    if (size != other.size) return size < other.size;
    for (std::uint32_t i = size; i-- > 0;)
        if (limbs[i] != other.limbs[i]) return limbs[i] < other.limbs[i];
    return false;
}

std::uint32_t BigNatural::bit_length() const {
    return size == 0 ? 0 : 64 * size - static_cast<std::uint32_t>(std::countl_zero(limbs[size - 1]));
}

}  // namespace korvane
