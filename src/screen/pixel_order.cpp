#include "screen/pixel_order.h"

#include <algorithm>

#include "platform/clock.h"
#include "platform/firmware.h"

namespace korvane {

PixelOrder pixel_order;

namespace {

constexpr std::uint64_t looks_per_second = 25;
constexpr std::uint32_t whole_byte = 0xFF;

// The lowest bit of a colour that has eight of a pixel; 32 for any other.
std::uint8_t lowest_bit(std::uint32_t mask) {
    for (std::uint8_t bit = 0; bit <= 24; ++bit)
        if (mask == whole_byte << bit) return bit;
    return 32;
}

// Whether pixels of a mode can be put in order; the places of their colours then are known.
bool learn_order(const uefi::GraphicsOutputModeInformation& info) {
    if (info.PixelFormat == uefi::PixelFormat::PixelRedGreenBlueReserved8BitPerColor) {
        pixel_order.red = 0;
        pixel_order.green = 8;
        pixel_order.blue = 16;
        return true;
    }
    if (info.PixelFormat != uefi::PixelFormat::PixelBitMask) return false;
    pixel_order.red = lowest_bit(info.PixelInformation.RedMask);
    pixel_order.green = lowest_bit(info.PixelInformation.GreenMask);
    pixel_order.blue = lowest_bit(info.PixelInformation.BlueMask);
    if (pixel_order.red == 16 && pixel_order.green == 8 && pixel_order.blue == 0) return false;
    return std::max({pixel_order.red, pixel_order.green, pixel_order.blue}) < 32;
}

// Memory that was too small is not given back, as that of the back buffer is not.
bool take_memory(std::uint64_t bytes) {
    const std::uint64_t pages = (bytes + uefi::page_size - 1) / uefi::page_size;
    uefi::PhysicalAddress memory = 0;
    const uefi::Status status = firmware.boot->AllocatePages(uefi::AllocateType::AllocateAnyPages,
                                                             uefi::MemoryType::EfiLoaderData, pages, &memory);
    if (uefi::is_error(status)) return false;
    pixel_order.memory = memory;
    pixel_order.capacity = pages * uefi::page_size;
    return true;
}

}  // namespace

DrawnFramebuffer choose_drawn_framebuffer(const uefi::GraphicsOutputMode& mode) {
    const DrawnFramebuffer own = {mode.FrameBufferBase, mode.FrameBufferSize};
    pixel_order.drawn = nullptr;
    if (!learn_order(*mode.Info)) return own;

    const std::uint64_t pixels = std::uint64_t{mode.Info->PixelsPerScanLine} * mode.Info->VerticalResolution;
    pixel_order.pixels = std::min(pixels, mode.FrameBufferSize / sizeof(std::uint32_t));
    const std::uint64_t bytes = pixel_order.pixels * sizeof(std::uint32_t);
    if (bytes > pixel_order.capacity && !take_memory(bytes)) return own;
    pixel_order.drawn = reinterpret_cast<const std::uint32_t*>(pixel_order.memory);
    pixel_order.shown = reinterpret_cast<std::uint32_t*>(mode.FrameBufferBase);
    pixel_order.next_look = 0;
    return {pixel_order.memory, bytes};
}

void copy_drawn_pixels() {
    for (std::uint64_t i = 0; i < pixel_order.pixels; ++i) {
        const std::uint32_t colour = pixel_order.drawn[i];
        pixel_order.shown[i] = (colour >> 16 & whole_byte) << pixel_order.red |
                               (colour >> 8 & whole_byte) << pixel_order.green |
                               (colour & whole_byte) << pixel_order.blue;
    }
    pixel_order.next_look = read_time_stamp() + tsc_clock.ticks_per_second / looks_per_second;
}

void show_drawn_pixels_if_due() {
    if (pixel_order.drawn != nullptr && read_time_stamp() >= pixel_order.next_look) copy_drawn_pixels();
}

}  // namespace korvane
