// Screen modes whose pixels hold their colours in another order than 0x00RRGGBB.
//
// Nothing that draws knows of them, and none of it takes longer for them. In such a mode memory stands for
// the framebuffer, for programs that write to SCRNADR too, and is copied to the real one, its colours put in
// order, whenever the keyboard is looked at. What is drawn is seen a moment later.
#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane {

struct PixelOrder {
    uefi::PhysicalAddress memory;  // taken for a mode before; 0 for none
    std::uint64_t capacity;        // its bytes
    const std::uint32_t* drawn;    // the same while it stands for the framebuffer, else null
    std::uint32_t* shown;          // the real framebuffer
    std::uint64_t pixels;          // that are copied, from the first on
    std::uint8_t red;              // the lowest bit of each colour's eight in a pixel that is shown
    std::uint8_t green;
    std::uint8_t blue;
    std::uint64_t next_look;  // time stamp from which on a look at the keyboard copies again
};
extern PixelOrder pixel_order;

// Prepares for the mode that the firmware is in, and gives the framebuffer to be drawn into with its bytes:
// the mode's own when its order is the console's, is one that cannot be made, or there is no memory.
struct DrawnFramebuffer {
    std::uint64_t base;
    std::uint64_t size;
};
DrawnFramebuffer choose_drawn_framebuffer(const uefi::GraphicsOutputMode& mode);

// Copies what has been drawn.
void copy_drawn_pixels();

// Shows what has been drawn, before something is waited for.
inline void show_drawn_pixels() {
    if (pixel_order.drawn != nullptr) copy_drawn_pixels();
}

// The same for those who look often: not more than about 25 times a second.
void show_drawn_pixels_if_due();

}  // namespace korvane
