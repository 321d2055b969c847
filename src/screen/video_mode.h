// The display behind the console: the firmware's graphics output, its modes and its memory type.
#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane {

struct Video {
    uefi::GraphicsOutputProtocol* graphics_output;  // found at start-up; never null afterwards
};
extern Video video;

// Start-up: finds the graphics output, keeps the firmware's current mode, takes its framebuffer and clears it
// to black. False, with nothing changed, when there is no graphics output.
bool video_start();

// Changes to the first mode of exactly this resolution and clears everything that confines output or
// graphics. False when the firmware has no such mode or cannot set it; the screen then stays as it was.
bool con_set_mode(std::uint32_t width, std::uint32_t height);

}  // namespace korvane
