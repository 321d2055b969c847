#include "screen/video_mode.h"

#include "platform/firmware.h"
#include "screen/console.h"
#include "screen/graphics.h"

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
    take_framebuffer(mode.FrameBufferBase, mode.FrameBufferSize, mode.Info->HorizontalResolution,
                     mode.Info->VerticalResolution, mode.Info->PixelsPerScanLine);
    make_write_combining(mode.FrameBufferBase, mode.FrameBufferSize);
    con_clear_black();
}

bool mode_has_resolution(std::uint32_t mode, std::uint32_t width, std::uint32_t height) {
    uefi::GraphicsOutputModeInformation* info = nullptr;
    std::uint64_t info_size = 0;
    const uefi::Status status =
        video.graphics_output->QueryMode(video.graphics_output, mode, &info_size, &info);
    if (uefi::is_error(status) || info == nullptr) return false;
    const bool matches = info->HorizontalResolution == width && info->VerticalResolution == height;
    firmware.boot->FreePool(info);
    return matches;
}

}  // namespace

bool video_start() {
    auto* const graphics_output =
        static_cast<uefi::GraphicsOutputProtocol*>(find_interface(uefi::graphics_output_guid));
    if (graphics_output == nullptr || graphics_output->Mode == nullptr) return false;
    if (graphics_output->Mode->Info == nullptr) return false;
    video.graphics_output = graphics_output;
    take_current_mode();
    return true;
}

bool con_set_mode(std::uint32_t width, std::uint32_t height) {
    const std::uint32_t modes = video.graphics_output->Mode->MaxMode;
    std::uint32_t mode = 0;
    while (mode < modes && !mode_has_resolution(mode, width, height))
        ++mode;
    if (mode == modes || uefi::is_error(video.graphics_output->SetMode(video.graphics_output, mode)))
        return false;
    take_current_mode();
    gfx_reset_coordinates();
    console.view_print_active = false;
    text_window_off();
    con_clear_all();
    return true;
}

}  // namespace korvane
