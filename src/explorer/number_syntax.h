#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvane {

// The number a word stands for. The prefix decides the base: `&H` or `0X` means hexadecimal, `D:` decimal,
// no prefix hexadecimal (deliberately unlike BASIC: a monitor speaks hexadecimal). Prefixes and digits may
// be of either case. Nothing when there are no digits, a character is no digit of the base, or the value
// exceeds 18446744073709551615.
std::optional<std::uint64_t> parse_number(std::string_view word);

// The same, limited to one byte: nothing also when the value exceeds 255.
std::optional<std::uint8_t> parse_byte(std::string_view word);

}  // namespace korvane
