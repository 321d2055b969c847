#include "statements/graphics/point_function.h"

#include "program/errors.h"
#include "screen/colour.h"
#include "screen/framebuffer.h"
#include "statements/graphics/coordinates.h"

namespace korvane {

Value gfx_point(double x, double y) {
    const Point point = gfx_map(x, y);
    if (error_pending()) return Value::nothing();
    if (point.x < 0 || point.y < 0 || point.x >= screen.width || point.y >= screen.height)
        return Value::of_integer(-1, Type::LONG);
    const std::uint32_t pixel =
        get_pixel(static_cast<std::uint32_t>(point.x), static_cast<std::uint32_t>(point.y));
    return Value::of_integer(pixel & colour_mask, Type::LONG);
}

}  // namespace korvane
