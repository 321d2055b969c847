#include "display.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "give_up.h"

namespace korvane::host {

namespace {

std::uint64_t framebuffer_bytes(const GraphicsMode& mode) {
    if (mode.format == uefi::PixelFormat::PixelBltOnly) return 0;
    return std::uint64_t{mode.pitch} * mode.height * sizeof(std::uint32_t);
}

std::uint64_t whole_pages(std::uint64_t bytes) {
    return (bytes + uefi::page_size - 1) / uefi::page_size * uefi::page_size;
}

std::uint64_t largest_framebuffer(const std::vector<GraphicsMode>& modes) {
    std::uint64_t largest = 0;
    for (const GraphicsMode& mode : modes)
        largest = std::max(largest, whole_pages(framebuffer_bytes(mode)));
    return largest;
}

uefi::GraphicsOutputModeInformation describe(const GraphicsMode& mode) {
    uefi::GraphicsOutputModeInformation information{};
    information.HorizontalResolution = mode.width;
    information.VerticalResolution = mode.height;
    information.PixelFormat = mode.format;
    information.PixelsPerScanLine = mode.pitch;
    return information;
}

}  // namespace

Display::Display(std::uint64_t base, std::vector<GraphicsMode> modes, std::uint32_t width,
                 std::uint32_t height, Pool& pool, ServiceFaults& faults)
    : uefi::GraphicsOutputProtocol{query_mode, set_mode, nullptr, nullptr},
      base_(base),
      modes_(std::move(modes)),
      mapping_(base, largest_framebuffer(modes_)),
      pool_(pool),
      faults_(faults) {
    Mode = &mode_;
    mode_.MaxMode = static_cast<std::uint32_t>(modes_.size());
    mode_.Info = &information_;
    mode_.SizeOfInfo = sizeof information_;
    const auto found = std::find_if(modes_.begin(), modes_.end(), [=](const GraphicsMode& mode) {
        return mode.width == width && mode.height == height;
    });
    if (found == modes_.end())
        give_up("there is no " + std::to_string(width) + "x" + std::to_string(height) + " screen mode");
    enter(static_cast<std::uint32_t>(found - modes_.begin()));
    if (mode_.FrameBufferSize != 0) std::memset(reinterpret_cast<void*>(base), 0x5A, mode_.FrameBufferSize);
}

void Display::enter(std::uint32_t mode) {
    information_ = describe(modes_[mode]);
    mode_.Mode = mode;
    mode_.FrameBufferSize = framebuffer_bytes(modes_[mode]);
    mode_.FrameBufferBase = mode_.FrameBufferSize == 0 ? 0 : base_;
    const std::uint64_t used = whole_pages(mode_.FrameBufferSize);
    if (used != 0) mapping_.protect(0, used, Access::read_write);
    mapping_.protect(used, mapping_.size() - used, Access::none);
}

std::span<const std::uint32_t> Display::pixels() const {
    return {reinterpret_cast<const std::uint32_t*>(mode_.FrameBufferBase),
            mode_.FrameBufferSize / sizeof(std::uint32_t)};
}

uefi::Status EFIAPI Display::query_mode(uefi::GraphicsOutputProtocol* self, std::uint32_t mode,
                                        std::uint64_t* size_of_info,
                                        uefi::GraphicsOutputModeInformation** info) {
    auto& display = *static_cast<Display*>(self);
    if (auto failure = display.faults_.strike(Service::QueryMode)) return *failure;
    if (mode >= display.modes_.size() || size_of_info == nullptr || info == nullptr)
        return uefi::invalid_parameter;
    void* record = nullptr;
    const uefi::Status status = display.pool_.allocate(sizeof(uefi::GraphicsOutputModeInformation), &record);
    if (uefi::is_error(status)) return status;
    const uefi::GraphicsOutputModeInformation information = describe(display.modes_[mode]);
    std::memcpy(record, &information, sizeof information);
    *info = static_cast<uefi::GraphicsOutputModeInformation*>(record);
    *size_of_info = sizeof information;
    return uefi::success;
}

uefi::Status EFIAPI Display::set_mode(uefi::GraphicsOutputProtocol* self, std::uint32_t mode) {
    auto& display = *static_cast<Display*>(self);
    if (auto failure = display.faults_.strike(Service::SetMode)) return *failure;
    if (mode >= display.modes_.size()) return uefi::unsupported;
    display.enter(mode);
    if (display.mode_.FrameBufferSize != 0)
        std::memset(reinterpret_cast<void*>(display.base_), 0, display.mode_.FrameBufferSize);
    ++display.mode_changes_;
    return uefi::success;
}

}  // namespace korvane::host
