// Colours: the palette and the conversion of colour arguments.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace korvane {

// The 16 colours that the values 0 to 15 select, as 0x00RRGGBB.
inline constexpr std::array<std::uint32_t, 16> palette = {
    0x000000, 0x0000AA, 0x00AA00, 0x00AAAA, 0xAA0000, 0xAA00AA, 0xAA5500, 0xAAAAAA,
    0x555555, 0x5555FF, 0x55FF55, 0x55FFFF, 0xFF5555, 0xFF55FF, 0xFFFF55, 0xFFFFFF,
};

// The bits of a pixel, and of a colour argument, that are the colour.
inline constexpr std::uint32_t colour_mask = 0xFFFFFF;

// The colour of a value: 0 to 15 the palette entry, from 16 on the value's low 24 bits as 0xRRGGBB. A
// negative value stands for none.
std::optional<std::uint32_t> colour_from_value(std::int64_t value);

// The colour of three components, each 0 to 255; nothing when one is not.
std::optional<std::uint32_t> colour_from_triple(std::int64_t red, std::int64_t green, std::int64_t blue);

}  // namespace korvane
