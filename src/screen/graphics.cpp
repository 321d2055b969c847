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

}  // namespace korvane
