// Names as the firmware takes them.
#pragma once

#include <cstdint>
#include <string_view>

namespace korvane {

// A name as the firmware takes it: each byte widened as a signed character (so 0x80 becomes 0xFF80), every
// "/" turned into "\", at most 255 characters, zero-terminated. A zero byte ends the name.
struct FirmwareName {
    static constexpr std::uint32_t max_length = 255;

    char16_t text[max_length + 1];
    std::uint32_t length;

    explicit FirmwareName(std::string_view name);
    bool empty() const { return length == 0; }
};

// A zero byte ends a name for the firmware: what is in front of one.
inline std::string_view up_to_zero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

}  // namespace korvane
