#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/firmware.h"
#include "platform/uefi.h"

namespace korvane {

// One region of the firmware's memory map.
struct MemoryRegion {
    std::uint64_t first;  // address of its first byte
    std::uint64_t last;  // of its last byte; a region that would pass the top of the address space ends there
    std::uint64_t pages;  // of 4096 bytes, as reported
    std::uint32_t type;   // EFI_MEMORY_TYPE
    std::uint64_t attributes;

    bool contains(std::uint64_t address) const { return pages != 0 && address >= first && address <= last; }
};

// "Conventional", "BootData" and so on; "Unknown" for a type of 15 or more.
const char* memory_type_name(std::uint32_t type);

// What is to be done with memory.
enum class Access : std::uint8_t {
    read,   // every region but reserved and unusable memory, memory-mapped I/O and processor firmware code
    write,  // only loader data, boot-services data and conventional memory
};
bool allows(Access access, std::uint32_t type);

// A reader of a memory map as the firmware gave it: descriptors of `descriptor_size` bytes, which may be
// more than this program knows of. Nothing is assumed about their order, size or overlap; where two overlap,
// the first in map order counts.
class MemoryMapView {
  public:
    MemoryMapView() = default;
    MemoryMapView(const std::uint8_t* descriptors, std::uint64_t bytes, std::uint64_t descriptor_size);

    std::size_t count() const { return count_; }
    MemoryRegion region(std::size_t index) const;

    // The first region in map order that contains the address.
    std::optional<MemoryRegion> find(std::uint64_t address) const;

    // How many consecutive bytes from `address` upward, at most `limit`, are accessible. The range must not
    // pass the top of the address space.
    std::uint64_t run_up(Access access, std::uint64_t address, std::uint64_t limit) const;

    // The same downward: bytes that end with the one at `address`.
    std::uint64_t run_down(Access access, std::uint64_t address, std::uint64_t limit) const;

  private:
    // The largest range around `address` in which the same descriptor is the first to contain every byte.
    std::optional<MemoryRegion> uniform_range(std::uint64_t address) const;

    const std::uint8_t* descriptors_ = nullptr;
    std::size_t count_ = 0;
    std::uint64_t descriptor_size_ = 0;
};

// A fresh copy of the firmware's memory map.
class MemoryMapSnapshot {
  public:
    // `spare_descriptors`: allocating the buffer may itself split regions; the room that is left for that.
    explicit MemoryMapSnapshot(std::uint64_t spare_descriptors = 4);

    explicit operator bool() const { return valid_; }  // false: the firmware gave no map
    const MemoryMapView& view() const { return view_; }

    // Hands the copy's memory over to the view, which then stays valid for good.
    MemoryMapView keep();

  private:
    std::optional<PoolBuffer> buffer_;
    MemoryMapView view_;
    bool valid_ = false;
};

// The copy of the memory map that decides which memory the explorer touches.
struct MemoryMapCache {
    MemoryMapView view;
    bool taken;  // the map has been obtained; it is then kept for the rest of the program
};
extern MemoryMapCache memory_map_cache;

// Start-up: no map taken yet.
void initialize_memory_map();

// The cached map, taken at the first call. Empty as long as the firmware gives none.
const MemoryMapView& cached_memory_map();

// Accessible bytes by the cached map: from `address` upward, or ending with `address`, at most `limit`.
std::uint64_t accessible_run_up(Access access, std::uint64_t address, std::uint64_t limit);
std::uint64_t accessible_run_down(Access access, std::uint64_t address, std::uint64_t limit);

}  // namespace korvane
