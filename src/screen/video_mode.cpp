#include "screen/video_mode.h"

#include "platform/firmware.h"
#include "platform/handle_list.h"
#include "screen/console.h"
#include "screen/graphics.h"
#include "screen/pixel_order.h"

namespace korvane {

Video video;

namespace {

// Makes stores to the framebuffer fast. Firmware that cannot is no reason to stop: only speed is at stake.
void make_write_combining(std::uint64_t base, std::uint64_t size) {
    auto* const cpu = static_cast<uefi::CpuArchProtocol*>(find_interface(uefi::cpu_arch_guid));
    if (cpu == nullptr) return;
    const std::uint64_t whole_pages = (size + uefi::page_size - 1) & ~(uefi::page_size - 1);
    cpu->SetMemoryAttributes(cpu, base, whole_pages, uefi::memory_write_combining);
}

// Takes geometry and framebuffer from the mode that the firmware is in.
void take_current_mode() {
    const uefi::GraphicsOutputMode& mode = *video.graphics_output->Mode;
    const DrawnFramebuffer drawn = choose_drawn_framebuffer(mode);
    take_framebuffer(drawn.base, drawn.size, mode.Info->HorizontalResolution, mode.Info->VerticalResolution,
                     mode.Info->PixelsPerScanLine);
    make_write_combining(mode.FrameBufferBase, mode.FrameBufferSize);
    con_clear_black();
}

// How a mode's pixels agree with the console's, which are words of the form 0x00RRGGBB.
enum class Fitness {
    none,     // no framebuffer, or pixels of another size
    swapped,  // colours in another order: what is drawn has to be copied
    good,
};

Fitness fitness(const uefi::GraphicsOutputModeInformation& info) {
    switch (info.PixelFormat) {
        case uefi::PixelFormat::PixelBlueGreenRedReserved8BitPerColor:
            return Fitness::good;
        case uefi::PixelFormat::PixelRedGreenBlueReserved8BitPerColor:
            return Fitness::swapped;
        case uefi::PixelFormat::PixelBitMask: {
            const uefi::PixelBitmask& masks = info.PixelInformation;
            // The highest bit of all tells how large a pixel is.
            const bool whole_words =
                (masks.RedMask | masks.GreenMask | masks.BlueMask | masks.ReservedMask) >> 24 != 0;
            if (!whole_words) return Fitness::none;
            const bool usual =
                masks.RedMask == 0xFF0000 && masks.GreenMask == 0xFF00 && masks.BlueMask == 0xFF;
            return usual ? Fitness::good : Fitness::swapped;
        }
        default:
            return Fitness::none;
    }
}

std::uint32_t difference(std::uint32_t a, std::uint32_t b) {
    return a > b ? a - b : b - a;
}

// The first of the fittest modes that are nearest to a size.
struct FoundMode {
    Fitness fitness = Fitness::none;
    std::uint32_t mode = 0;
    std::uint32_t distance = 0;  // 0: the very size
};

FoundMode find_mode(uefi::GraphicsOutputProtocol& output, std::uint32_t width, std::uint32_t height,
                    std::uint32_t greatest_distance) {
    FoundMode found{Fitness::none, 0, greatest_distance + 1};
    for (std::uint32_t mode = 0; mode < output.Mode->MaxMode; ++mode) {
        uefi::GraphicsOutputModeInformation* info = nullptr;
        std::uint64_t info_size = 0;
        if (uefi::is_error(output.QueryMode(&output, mode, &info_size, &info)) || info == nullptr) continue;
        const FoundMode other = {
            fitness(*info), mode,
            difference(info->HorizontalResolution, width) + difference(info->VerticalResolution, height)};
        firmware.boot->FreePool(info);
        if (other.distance > greatest_distance || other.fitness < found.fitness) continue;
        if (other.fitness == found.fitness && other.distance >= found.distance) continue;
        found = other;
        if (found.fitness == Fitness::good && found.distance == 0) break;
    }
    return found;
}

constexpr std::uint32_t any_distance = 0x7FFFFFFF;

// Leaves a mode that can be drawn in as it is; else changes to the nearest one that can.
bool make_usable(uefi::GraphicsOutputProtocol& output) {
    if (output.Mode == nullptr || output.Mode->Info == nullptr) return false;
    const uefi::GraphicsOutputModeInformation current = *output.Mode->Info;
    const Fitness as_it_is = fitness(current);
    if (as_it_is == Fitness::good) return true;
    const FoundMode found =
        find_mode(output, current.HorizontalResolution, current.VerticalResolution, any_distance);
    if (found.fitness > as_it_is && !uefi::is_error(output.SetMode(&output, found.mode))) return true;
    return as_it_is != Fitness::none;
}

// The graphics output that the firmware prefers may stand for several and have no framebuffer itself.
uefi::GraphicsOutputProtocol* find_graphics_output() {
    auto* const preferred =
        static_cast<uefi::GraphicsOutputProtocol*>(find_interface(uefi::graphics_output_guid));
    if (preferred == nullptr) return nullptr;
    if (preferred->Mode != nullptr) video.first_mode = preferred->Mode->Mode;
    if (make_usable(*preferred)) return preferred;
    for (const uefi::Handle handle : HandleList(uefi::graphics_output_guid)) {
        auto* const other =
            static_cast<uefi::GraphicsOutputProtocol*>(find_interface(handle, uefi::graphics_output_guid));
        if (other == nullptr || other == preferred || other->Mode == nullptr) continue;
        video.first_mode = other->Mode->Mode;
        if (make_usable(*other)) return other;
    }
    return nullptr;
}

}  // namespace

bool video_start() {
    uefi::GraphicsOutputProtocol* const graphics_output = find_graphics_output();
    if (graphics_output == nullptr) return false;
    video.graphics_output = graphics_output;
    take_current_mode();
    return true;
}

void video_end() {
    bring_up_to_date();
    uefi::GraphicsOutputProtocol& output = *video.graphics_output;
    // A mode that cannot be set again was good enough to draw in.
    if (output.Mode->Mode != video.first_mode) output.SetMode(&output, video.first_mode);
}

bool con_set_mode(std::uint32_t width, std::uint32_t height) {
    bring_up_to_date();
    uefi::GraphicsOutputProtocol& output = *video.graphics_output;
    const FoundMode found = find_mode(output, width, height, 0);
    if (found.fitness == Fitness::none || uefi::is_error(output.SetMode(&output, found.mode))) return false;
    take_current_mode();
    gfx_reset_coordinates();
    console.view_print_active = false;
    text_window_off();
    con_clear_all();
    return true;
}

}  // namespace korvane
