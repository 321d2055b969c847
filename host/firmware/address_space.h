// Memory of this process at chosen addresses.
#pragma once

#include <cstdint>
#include <span>
#include <utility>

namespace korvane::host {

enum class Access { none, read, read_write, read_execute, all };

// Zeroed memory at a fixed address, with an inaccessible page on either side, unmapped when its owner goes.
class Mapping {
  public:
    Mapping() = default;
    // Ends the program with a message when the addresses are taken. `base` and `size` are whole pages.
    Mapping(std::uint64_t base, std::uint64_t size);
    ~Mapping();
    Mapping(Mapping&& other) noexcept
        : base_(std::exchange(other.base_, 0)), size_(std::exchange(other.size_, 0)) {}
    Mapping& operator=(Mapping&& other) noexcept {
        std::swap(base_, other.base_);
        std::swap(size_, other.size_);
        return *this;
    }

    std::uint64_t base() const { return base_; }
    std::uint64_t size() const { return size_; }
    bool contains(std::uint64_t address) const { return address - base_ < size_; }
    std::span<std::uint8_t> bytes() const { return {reinterpret_cast<std::uint8_t*>(base_), size_}; }

    // Takes whole pages of it from the system before they are touched. `offset` and `size` are bytes. Where
    // the system cannot do that, they come when they are touched, as ever.
    void make_present(std::uint64_t offset, std::uint64_t size);

    // Changes the access to whole pages of it. `offset` and `size` are bytes.
    void protect(std::uint64_t offset, std::uint64_t size, Access access);

  private:
    std::uint64_t base_ = 0;
    std::uint64_t size_ = 0;  // without the guard pages
};

}  // namespace korvane::host
