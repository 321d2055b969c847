// UTF-8, UTF-16 and code page 437.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvane::host {

/// Unpaired surrogates become U+FFFD.
std::string to_utf8(std::u16string_view text);
std::string to_utf8(char32_t character);

/// Nothing when the bytes are not well-formed UTF-8.
std::optional<std::u16string> to_utf16(std::string_view utf8);

/// The character that each code of the console font shows; codes 0, 32 and 255 are blank.
extern const std::array<char16_t, 256> code_page_437;

/// The code that shows a character, or nothing.
std::optional<std::uint8_t> to_code_page_437(char32_t character);

/// The same for a whole text; characters that the code page lacks give nothing.
std::optional<std::string> to_code_page_437(std::string_view utf8);

}  // namespace korvane::host
