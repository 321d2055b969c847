// The Bresenham algorithm in the form of an error term runs over every pixel of the line. To start it at the
// first pixel inside the clip rectangle, its steps are counted: a line takes `major` steps, each moving one
// pixel along the longer axis, and `minor` of them also move along the shorter one. The error term makes the
// shorter axis stand at
//
//     floor((2 k minor + major) / (2 major))
//
// after k steps, the ideal position rounded with halves going towards the end. Hence it has made at least m
// steps exactly when  k minor + floor(major / 2) >= m major,  which 128 bits hold
// for every pair of 64-bit coordinates.
#include "screen/gfx_line.h"

#include <algorithm>

namespace korvane {

namespace {

using Wide = unsigned __int128;

// One coordinate of a line.
struct Axis {
    std::int64_t start;
    std::uint64_t length;  // pixels from start to end
    bool forward;

    Axis(std::int64_t from, std::int64_t to)
        : start(from),
          length(to >= from ? static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from)
                            : static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(to)),
          forward(to >= from) {}

    std::int64_t at(std::uint64_t step) const {
        const auto origin = static_cast<std::uint64_t>(start);
        return static_cast<std::int64_t>(forward ? origin + step : origin - step);
    }
};

struct Slope {
    std::uint64_t major;
    std::uint64_t minor;

    // True when the shorter axis has moved at least `m` pixels after `k` steps.
    bool reaches(std::uint64_t k, std::uint64_t m) const {
        return Wide{k} * minor + major / 2 >= Wide{m} * major;
    }

    // The pixels that the shorter axis has moved after `k` steps.
    std::uint64_t minor_after(std::uint64_t k) const {
        std::uint64_t low = 0;
        for (std::uint64_t high = minor; low < high;) {
            const std::uint64_t middle = high - (high - low) / 2;  // rounded up; cannot wrap
            if (reaches(k, middle))
                low = middle;
            else
                high = middle - 1;
        }
        return low;
    }

    // The first step after which the shorter axis has moved at least `m` pixels; m is at most `minor`.
    std::uint64_t first_step_with(std::uint64_t m) const {
        std::uint64_t low = 0;
        for (std::uint64_t high = major; low < high;) {
            const std::uint64_t middle = low + (high - low) / 2;
            if (reaches(middle, m))
                high = middle;
            else
                low = middle + 1;
        }
        return low;
    }
};

// Narrows `steps` to those at which the shorter axis has moved `moved.first` to `moved.last` pixels.
void clip_to_minor(StepRange& steps, const Slope& slope, const StepRange& moved) {
    if (moved.first > 0) steps.first = std::max(steps.first, slope.first_step_with(moved.first));
    if (moved.last < slope.minor)
        steps.last = std::min(steps.last, slope.first_step_with(moved.last + 1) - 1);
}

// Draws the steps of a line whose pixels all lie inside the clip rectangle.
void draw_steps(std::uint64_t index, std::uint64_t major_stride, std::uint64_t minor_stride,
                const Slope& slope, const StepRange& steps, std::uint64_t minor_done, std::uint32_t colour) {
    const PixelWriter writer;
    auto error = static_cast<std::uint64_t>(Wide{steps.first} * slope.minor + slope.major / 2 -
                                            Wide{minor_done} * slope.major);
    const std::uint64_t threshold = slope.major - slope.minor;
    for (std::uint64_t left = steps.last - steps.first;; --left) {
        writer.put(index, colour);
        if (left == 0) return;
        index += major_stride;
        if (error >= threshold) {
            error -= threshold;
            index += minor_stride;
        } else {
            error += slope.minor;
        }
    }
}

}  // namespace

void gfx_line(Point from, Point to, std::uint32_t colour) {
    const PixelRectangle clip = gfx_clip();
    if (from.y == to.y) {
        fill_clipped({std::min(from.x, to.x), from.y, std::max(from.x, to.x), to.y}, clip, colour);
        return;
    }
    if (clip.left > clip.right || clip.top > clip.bottom) return;
    const Axis x(from.x, to.x);
    const Axis y(from.y, to.y);
    const bool wide = x.length >= y.length;
    const Slope slope = wide ? Slope{x.length, y.length} : Slope{y.length, x.length};
    const StepRange x_steps = steps_inside(x.start, x.length, x.forward, clip.left, clip.right);
    const StepRange y_steps = steps_inside(y.start, y.length, y.forward, clip.top, clip.bottom);
    if (x_steps.empty() || y_steps.empty()) return;
    StepRange steps = wide ? x_steps : y_steps;
    clip_to_minor(steps, slope, wide ? y_steps : x_steps);
    if (steps.empty()) return;

    const std::uint64_t minor_done = steps.first == 0 ? 0 : slope.minor_after(steps.first);
    const std::int64_t first_x = x.at(wide ? steps.first : minor_done);
    const std::int64_t first_y = y.at(wide ? minor_done : steps.first);
    const std::uint64_t x_stride = x.forward ? 1 : ~std::uint64_t{0};
    const std::uint64_t y_stride = y.forward ? screen.pitch : std::uint64_t{0} - screen.pitch;
    draw_steps(pixel_index(static_cast<std::uint32_t>(first_x), static_cast<std::uint32_t>(first_y)),
               wide ? x_stride : y_stride, wide ? y_stride : x_stride, slope, steps, minor_done, colour);
}

void gfx_box(const PixelRectangle& box, std::uint32_t colour) {
    gfx_line({box.left, box.top}, {box.right, box.top}, colour);
    gfx_line({box.left, box.bottom}, {box.right, box.bottom}, colour);
    gfx_line({box.left, box.top}, {box.left, box.bottom}, colour);
    gfx_line({box.right, box.top}, {box.right, box.bottom}, colour);
}

}  // namespace korvane
