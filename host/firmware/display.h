// The graphics output protocol over a framebuffer of its own.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "address_space.h"
#include "config.h"
#include "platform/uefi.h"
#include "pool.h"
#include "service_faults.h"

namespace korvane::host {

class Display : public uefi::GraphicsOutputProtocol {
  public:
    // The framebuffer begins at `base`; memory past the current mode's last page is inaccessible. Starts in
    // the mode of the given size with random-looking pixels; ends the program when there is no such mode.
    Display(std::uint64_t base, std::vector<GraphicsMode> modes, std::uint32_t width, std::uint32_t height,
            Pool& pool, ServiceFaults& faults);

    std::uint32_t width() const { return information_.HorizontalResolution; }
    std::uint32_t height() const { return information_.VerticalResolution; }
    std::uint32_t pitch() const { return information_.PixelsPerScanLine; }

    // All pixels of the mode as the image has stored them, row by row at the pitch; none in a
    // mode without a framebuffer.
    std::span<const std::uint32_t> pixels() const;
    std::uint32_t pixel(std::uint32_t x, std::uint32_t y) const {
        return pixels()[std::size_t{y} * pitch() + x];
    }

    // The framebuffer's mapping, which is larger than the current mode's framebuffer.
    const Mapping& mapping() const { return mapping_; }

    // Mode changes so far.
    std::uint64_t mode_changes() const { return mode_changes_; }

  private:
    static uefi::Status EFIAPI query_mode(uefi::GraphicsOutputProtocol* self, std::uint32_t mode,
                                          std::uint64_t* size_of_info,
                                          uefi::GraphicsOutputModeInformation** info);
    static uefi::Status EFIAPI set_mode(uefi::GraphicsOutputProtocol* self, std::uint32_t mode);

    void enter(std::uint32_t mode);

    std::uint64_t base_;
    std::vector<GraphicsMode> modes_;
    Mapping mapping_;
    Pool& pool_;
    ServiceFaults& faults_;
    uefi::GraphicsOutputMode mode_{};
    uefi::GraphicsOutputModeInformation information_{};
    std::uint64_t mode_changes_ = 0;
};

}  // namespace korvane::host
