#include "numbers/scaled.h"

#include <array>
#include <bit>

namespace korvane {
namespace {

using Wide = unsigned __int128;

// 10^power is 10^(27 block) * 5^rest * 2^rest. The last two are exact; so is a head times 5^rest in 128 bits.
// Heads and powers of five have their highest bits set, so their product lacks one bit at most.
constexpr std::int32_t block_size = 27;
constexpr std::int32_t first_block = -13;

// The leading 128 bits of 10^(27 block), what follows them left out.
struct Power {
    std::uint64_t high;
    std::uint64_t low;
};
constexpr std::array<Power, 25> powers = {{
    {0x8049A4AC0C5811AE, 0x205B896D777D6278},  // 10^-351
    {0xCF42894A5DCE35EA, 0x52064CAC828675B9}, {0xA76C582338ED2621, 0xAF2AF2B80AF6F24E},
    {0x873E4F75E2224E68, 0x5A7744A6E804A291}, {0xDA7F5BF590966848, 0xAF39A475506A899E},
    {0xB080392CC4349DEC, 0xBD8D794D96AACFB3}, {0x8E938662882AF53E, 0x547EB47B7282EE9C},
    {0xE65829B3046B0AFA, 0x0CB4A5A3112A5112}, {0xBA121A4650E4DDEB, 0x92F34D62616CE413},
    {0x964E858C91BA2655, 0x3A6A07F8D510F86F}, {0xF2D56790AB41C2A2, 0xFAE27299423FB9C3},
    {0xC428D05AA4751E4C, 0xAA97E14C3C26B886}, {0x9E74D1B791E07E48, 0x775EA264CF55347D},
    {0x8000000000000000, 0x0000000000000000},  // 10^0
    {0xCECB8F27F4200F3A, 0x0000000000000000}, {0xA70C3C40A64E6C51, 0x999090B65F67D924},
    {0x86F0AC99B4E8DAFD, 0x69A028BB3DED71A3}, {0xDA01EE641A708DE9, 0xE80E6F4820CC9495},
    {0xB01AE745B101E9E4, 0x5EC05DCFF72E7F8F}, {0x8E41ADE9FBEBC27D, 0x14588F13BE847307},
    {0xE5D3EF282A242E81, 0x8F1668C8A86DA5FA}, {0xB9A74A0637CE2EE1, 0x6D953E2BD7173692},
    {0x95F83D0A1FB69CD9, 0x4ABDAF101564F98E}, {0xF24A01A73CF2DCCF, 0xBC633B39673C8CEC},
    {0xC3B8358109E84F07, 0x0A862F80EC4700C8},  // 10^297
}};
static_assert(lowest_scale == first_block * block_size);
static_assert(highest_scale == (first_block + static_cast<std::int32_t>(powers.size())) * block_size - 1);

constexpr auto powers_of_five = [] {
    std::array<std::uint64_t, block_size> all{1};
    for (std::size_t i = 1; i < all.size(); ++i)
        all[i] = 5 * all[i - 1];
    for (std::uint64_t& power : all)
        power <<= std::countl_zero(power);
    return all;
}();

// A division by the block's size, of what the table reaches.
constexpr std::int32_t block_of(std::int32_t distance) {
    return distance * 2428 >> 16;
}
static_assert([] {
    for (std::int32_t distance = 0; distance <= highest_scale - lowest_scale; ++distance)
        if (block_of(distance) != distance / block_size) return false;
    return true;
}());

// Whether nothing had to be left out: 5^54 has 126 bits.
bool is_exact(std::int32_t block) {
    return block >= 0 && block <= 2;
}

// The binary exponent of 10^power within the range of the table.
std::int32_t binary_exponent(std::int32_t power) {
    return (power * 217706) >> 16;  // log2(10) * 2^16
}

// The upper half of a product of 256 bits; `lower` becomes the other one.
Wide multiply(Wide left, Power right, Wide& lower) {
    const auto left_low = static_cast<std::uint64_t>(left);
    const auto left_high = static_cast<std::uint64_t>(left >> 64);
    const Wide low = Wide{left_low} * right.low;
    const Wide middle = Wide{left_high} * right.low + static_cast<std::uint64_t>(low >> 64);
    const Wide other_middle = Wide{left_low} * right.high + static_cast<std::uint64_t>(middle);
    lower = other_middle << 64 | static_cast<std::uint64_t>(low);
    return Wide{left_high} * right.high + static_cast<std::uint64_t>(middle >> 64) +
           static_cast<std::uint64_t>(other_middle >> 64);
}

// Decides by all bits of the power; `exponent` is that of the quotient before its highest bit is set.
[[gnu::cold, gnu::noinline]] Scaled scale_by_all_bits(Wide integer, std::int32_t index,
                                                      std::int32_t exponent) {
    Wide lower = 0;
    Wide product = multiply(integer, powers[static_cast<std::size_t>(index)], lower);
    for (; product >> 127 == 0; --exponent) {
        product = product << 1 | lower >> 127;
        lower <<= 1;
    }
    const auto quotient = static_cast<std::uint64_t>(product >> 64);
    const auto rest = static_cast<std::uint64_t>(product);
    if (is_exact(first_block + index)) return {quotient, exponent, (rest | lower) != 0};
    // What the power lacks is less than one unit of its last bit, so the product lacks less than two units of
    // the rest, eight once it has been shifted by two; and it does lack something.
    return {rest < ~std::uint64_t{0} - 7 ? quotient : 0, exponent, true};
}

}  // namespace

Scaled scale_quickly(std::uint64_t head, std::int32_t power) {
    const std::int32_t index = block_of(power - lowest_scale);
    const std::int32_t power_of_block = (first_block + index) * block_size;
    const std::int32_t rest_of_power = power - power_of_block;
    const std::int32_t zeros = std::countl_zero(head | 1);
    const Wide integer = Wide{head << zeros} * powers_of_five[static_cast<std::size_t>(rest_of_power)];
    const std::int32_t exponent =
        binary_exponent(power_of_block) + binary_exponent(rest_of_power) - zeros + 2;

    // The product of the upper halves has an upper half that lacks less than three units, twelve once it has
    // been shifted by two. No format ends within the quotient's last ten bits, so mostly nothing is to be
    // carried out of them, and what they are does not matter.
    const Wide product =
        Wide{static_cast<std::uint64_t>(integer >> 64)} * powers[static_cast<std::size_t>(index)].high;
    const auto upper = static_cast<std::uint64_t>(product >> 64);
    const std::int32_t shift = std::countl_zero(upper | 1);
    const std::uint64_t quotient = upper << shift;
    if ((quotient & 1023) - 1 >= 1023 - 12) return scale_by_all_bits(integer, index, exponent);
    return {quotient, exponent - shift, true};
}

}  // namespace korvane
