// UTF-8 and UTF-16.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvane::host {

// Unpaired surrogates become U+FFFD.
std::string to_utf8(std::u16string_view text);

// The code point that begins at `position`, which moves past what was read;
// nothing when it is not well formed.
std::optional<char32_t> decode_utf8(std::string_view utf8, std::size_t& position);

// Nothing when the bytes are not well-formed UTF-8.
std::optional<std::u16string> to_utf16(std::string_view utf8);

}  // namespace korvane::host
