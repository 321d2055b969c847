// What the graphics statements remember between them:
// the last point, the viewport and the logical coordinates.
//
// This is the lowest layer of the graphics: it knows neither the framebuffer nor the console, so that the
// console can reset it on a clear or a mode change. screen/plot.h draws, statements/graphics/coordinates.h
// maps and parses points. The rows of VIEW PRINT confine text, not graphics; they belong to the console.
#pragma once

#include <cstdint>

namespace korvane {

// A physical pixel, which may lie outside the screen.
struct Point {
    std::int64_t x;
    std::int64_t y;
};

// An inclusive rectangle of physical pixels;
// empty when a right or bottom edge lies before its left or top edge.
struct PixelRectangle {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;

    constexpr bool contains(std::int64_t x, std::int64_t y) const {
        return x >= left && x <= right && y >= top && y <= bottom;
    }
};

struct Graphics {
    Point last_point;         // where STEP, LINE - and DRAW go on from
    bool last_point_set;      // off until the first graphics statement or full clear
    bool viewport_active;     // VIEW confines drawing to `viewport`
    bool viewport_screen;     // VIEW SCREEN: coordinates are absolute, not relative to the viewport's corner
    PixelRectangle viewport;  // left < right and top < bottom, inside the screen, when active
    bool logical_active;      // WINDOW maps logical coordinates onto the viewport or screen
    bool logical_screen;      // WINDOW SCREEN: y grows downwards
    double logical_x1;        // the logical corners in the order written; unsorted corners mirror the axis
    double logical_y1;
    double logical_x2;
    double logical_y2;
};
extern Graphics graphics;

// Start-up: no last point yet, no viewport, no logical coordinates.
void gfx_start();

// Switches the viewport and the logical coordinates off, as a mode change does. The last point stays.
void gfx_reset_coordinates();

// Puts the last point at the centre of a screen of this many pixels, as the full clear does.
void gfx_center_last_point(std::uint32_t width, std::uint32_t height);

// Whether coordinates, as programs write them, are so near to the screen that those of their pixel are no
// overflow.
bool gfx_is_near(double x, double y);

inline bool gfx_viewport_active() {
    return graphics.viewport_active;
}

}  // namespace korvane
