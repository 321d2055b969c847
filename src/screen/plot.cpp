#include "screen/plot.h"

#include <algorithm>
#include <limits>

namespace korvane {

std::int64_t saturating_add(std::int64_t left, std::int64_t right) {
    std::int64_t sum;
    if (!__builtin_add_overflow(left, right, &sum)) return sum;
    return right > 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

std::int64_t saturating_subtract(std::int64_t left, std::int64_t right) {
    std::int64_t difference;
    if (!__builtin_sub_overflow(left, right, &difference)) return difference;
    return right < 0 ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

PixelRectangle screen_rectangle() {
    bring_up_to_date();
    std::uint64_t rows = screen.height;
    // A row counts when its last visible pixel lies in memory: firmware may leave the unseen words behind the
    // last row out of the size that it reports.
    if (rows != 0 && pixel_index(0, screen.height - 1) + screen.width > screen.addressable) {
        const bool any = screen.pitch != 0 && screen.addressable >= screen.width;
        rows =
            any ? std::min<std::uint64_t>(rows, (screen.addressable - screen.width) / screen.pitch + 1) : 0;
    }
    return {0, 0, std::int64_t{screen.width} - 1, static_cast<std::int64_t>(rows) - 1};
}

PixelRectangle gfx_clip() {
    PixelRectangle clip = screen_rectangle();
    if (graphics.viewport_active) {
        clip.left = std::max(clip.left, graphics.viewport.left);
        clip.top = std::max(clip.top, graphics.viewport.top);
        clip.right = std::min(clip.right, graphics.viewport.right);
        clip.bottom = std::min(clip.bottom, graphics.viewport.bottom);
    }
    return clip;
}

bool lies_inside(const PixelRectangle& rectangle, const PixelRectangle& clip) {
    return rectangle.left <= rectangle.right && rectangle.top <= rectangle.bottom &&
           rectangle.left >= clip.left && rectangle.top >= clip.top && rectangle.right <= clip.right &&
           rectangle.bottom <= clip.bottom;
}

void gfx_plot(std::int64_t x, std::int64_t y, std::uint32_t colour) {
    if (!gfx_clip().contains(x, y)) return;
    set_pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), colour);
}

void fill_clipped(const PixelRectangle& rectangle, const PixelRectangle& clip, std::uint32_t colour) {
    const std::int64_t left = std::max(rectangle.left, clip.left);
    const std::int64_t top = std::max(rectangle.top, clip.top);
    const std::int64_t right = std::min(rectangle.right, clip.right);
    const std::int64_t bottom = std::min(rectangle.bottom, clip.bottom);
    if (left > right || top > bottom) return;
    fill_pixels(static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
                static_cast<std::uint32_t>(right - left + 1), static_cast<std::uint32_t>(bottom - top + 1),
                colour);
}

StepRange steps_inside(std::int64_t start, std::uint64_t length, bool forward, std::int64_t low,
                       std::int64_t high) {
    constexpr StepRange none{1, 0};
    const std::int64_t enter = forward ? low : high;  // the bound met first when coming from outside
    const std::int64_t leave = forward ? high : low;
    if (forward ? start > leave : start < leave) return none;
    const auto distance = [&](std::int64_t bound) {
        return forward ? static_cast<std::uint64_t>(bound) - static_cast<std::uint64_t>(start)
                       : static_cast<std::uint64_t>(start) - static_cast<std::uint64_t>(bound);
    };
    const bool outside = forward ? start < enter : start > enter;
    const StepRange range{outside ? distance(enter) : 0, std::min(length, distance(leave))};
    return range.empty() ? none : range;
}

}  // namespace korvane
