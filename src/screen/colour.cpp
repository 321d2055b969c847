#include "screen/colour.h"

namespace korvane {

std::optional<std::uint32_t> colour_from_value(std::int64_t value) {
    if (value < 0) return std::nullopt;
    if (value < std::int64_t{palette.size()}) return palette[static_cast<std::size_t>(value)];
    return static_cast<std::uint32_t>(value & colour_mask);
}

std::optional<std::uint32_t> colour_from_triple(std::int64_t red, std::int64_t green, std::int64_t blue) {
    const auto is_component = [](std::int64_t value) { return value >= 0 && value <= 255; };
    if (!is_component(red) || !is_component(green) || !is_component(blue)) return std::nullopt;
    return static_cast<std::uint32_t>(red * 65536 + green * 256 + blue);
}

}  // namespace korvane
