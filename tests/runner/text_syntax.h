// The small notations inside transcript lines: numbers, escapes, keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/uefi.h"

namespace korvane::transcript {

// Decimal, or hexadecimal after "0x"; a closing K or M multiplies by 2^10 or 2^20.
std::optional<std::uint64_t> parse_number(std::string_view text);

// Six hexadecimal digits.
std::optional<std::uint32_t> parse_colour(std::string_view text);

// Replaces \\ \r \n \t \0 and \xHH; nothing for anything else after a backslash.
std::optional<std::string> unescape(std::string_view text);

// Pairs of hexadecimal digits; blanks between pairs are allowed.
std::optional<std::string> parse_hex_bytes(std::string_view text);

// The keys that type a text: a character of code page 437 is sent as its code.
std::optional<std::vector<uefi::InputKey>> typed_keys(std::string_view text);

// The same, with names of keys in braces: {ESC} {UP} {DOWN} {LEFT} {RIGHT} {HOME} {END} {INS} {DEL} {PGUP}
// {PGDN} {F1} to {F10} {BS} {TAB} {ENTER} {LBRACE}, {xHHHH} for a character and {sHH} for a scan code alone.
std::optional<std::vector<uefi::InputKey>> named_keys(std::string_view text);

// "YYYY-MM-DD HH:MM:SS".
std::optional<uefi::Time> parse_time(std::string_view text);

// Words between blanks.
std::vector<std::string> split_words(std::string_view text);

std::string without_trailing_blanks(std::string text);

}  // namespace korvane::transcript
