#include "screen/graphics.h"

namespace korvane {

Graphics graphics;

void gfx_start() {
    graphics = Graphics{};
}

void gfx_reset_coordinates() {
    graphics.viewport_active = false;
    graphics.viewport_screen = false;
    graphics.logical_active = false;
    graphics.logical_screen = false;
}

void gfx_center_last_point(std::uint32_t width, std::uint32_t height) {
    graphics.last_point = {width / 2, height / 2};
    graphics.last_point_set = true;
}

namespace {

// Within a million times the way between two coordinates that are mapped onto the screen or its pixels.
bool is_near(double x, double from, double to) {
    constexpr double far = 1e6;
    return __builtin_fabs(x - from) < far * __builtin_fabs(to - from);
}

}  // namespace

bool gfx_is_near(double x, double y) {
    if (!graphics.logical_active) return is_near(x, 0, 1) && is_near(y, 0, 1);
    return is_near(x, graphics.logical_x1, graphics.logical_x2) &&
           is_near(y, graphics.logical_y1, graphics.logical_y2);
}

}  // namespace korvane
