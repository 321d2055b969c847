// The display behind the console: the firmware's graphics output, its modes and its memory type.
#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane {

struct Video {
    uefi::GraphicsOutputProtocol* graphics_output;  // found at start-up; never null afterwards
    std::uint32_t first_mode;                       // the firmware's, before anything was changed
};
extern Video video;

// Start-up: finds the graphics output, keeps the firmware's current mode, takes its framebuffer and clears it
// to black. When that mode has no framebuffer, or has red and blue the other way round, the nearest one that
// is better is set. False, with nothing drawn, when there is no graphics output, or none that
// can be drawn in.
bool video_start();

// The end of the application: sets the mode again that there was at the start.
void video_end();

// Changes to the first mode of exactly this resolution, of several the first that shows colours right, and
// clears everything that confines output or graphics. False when the firmware has no such mode or cannot set
// it; the screen then stays as it was.
bool con_set_mode(std::uint32_t width, std::uint32_t height);

}  // namespace korvane
