#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "explorer/line_text.h"

namespace korvane {

// Attributes of a load option (UEFI 2.10, section 3.1.3).
inline constexpr std::uint32_t load_option_active = 0x1;
inline constexpr std::uint32_t load_option_hidden = 0x8;
inline constexpr std::uint32_t load_option_category = 0x1F00;
inline constexpr std::uint32_t load_option_category_application = 0x100;

// The contents of a `Boot####` variable; the spans are parts of its bytes.
struct LoadOption {
    std::uint32_t attributes;
    std::span<const std::uint8_t> description;  // UTF-16 without its terminator
    std::span<const std::uint8_t> device_path;

    bool is_active() const { return (attributes & load_option_active) != 0; }
    bool is_hidden() const { return (attributes & load_option_hidden) != 0; }
    bool is_application() const {
        return (attributes & load_option_category) == load_option_category_application;
    }
};

// Takes a load option apart; nothing when its parts do not fit into its bytes.
std::optional<LoadOption> decode_load_option(std::span<const std::uint8_t> bytes);

// Puts the description as 8-bit text.
void put_description(LineText& line, const LoadOption& option);

}  // namespace korvane
