#include "screen/colour.h"

#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

std::uint32_t colour_from_value(std::int64_t value) {
    if (value < 0) {
        raise(message::illegal_function_call);
        return 0;
    }
    if (value < std::int64_t{palette.size()}) return palette[static_cast<std::size_t>(value)];
    return static_cast<std::uint32_t>(value & 0xFFFFFF);
}

std::uint32_t colour_from_triple(std::int64_t red, std::int64_t green, std::int64_t blue) {
    const auto is_component = [](std::int64_t value) { return value >= 0 && value <= 255; };
    if (!is_component(red) || !is_component(green) || !is_component(blue)) {
        raise(message::illegal_function_call);
        return 0;
    }
    return static_cast<std::uint32_t>(red * 65536 + green * 256 + blue);
}

}  // namespace korvane
