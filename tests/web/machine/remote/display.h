// The screen of a machine elsewhere, as it was when the machine stopped.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace korvane::host {

class Display {
  public:
    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }
    std::uint32_t pitch() const { return pitch_; }
    std::span<const std::uint32_t> pixels() const { return pixels_; }
    std::uint32_t pixel(std::uint32_t x, std::uint32_t y) const {
        return pixels_[std::size_t{y} * pitch_ + x];
    }
    std::uint64_t mode_changes() const { return mode_changes_; }

  private:
    friend class Machine;

    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::uint32_t pitch_ = 0;
    std::uint64_t mode_changes_ = 0;
    std::vector<std::uint32_t> pixels_;
};

}  // namespace korvane::host
