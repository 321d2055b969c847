#include "platform/memory_map.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/memory.h"

namespace korvane {
namespace {

using uefi::MemoryType;

constexpr std::uint64_t top_of_memory = std::numeric_limits<std::uint64_t>::max();
// No machine reports more than a few hundred regions; a size beyond this is not believed.
constexpr std::uint64_t largest_map = std::uint64_t{16} * 1024 * 1024;

constexpr std::array<const char*, 15> type_names = {"Reserved", "LoaderCode",  "LoaderData",  "BootCode",
                                                    "BootData", "RuntimeCode", "RuntimeData", "Conventional",
                                                    "Unusable", "ACPIReclaim", "ACPINVS",     "MMIO",
                                                    "MMIOPort", "PalCode",     "Persistent"};

// The size of buffer that the map wants, with room to grow; 0 when the firmware does not tell.
std::uint64_t wanted_buffer_size(std::uint64_t spare_descriptors, std::uint64_t& descriptor_size) {
    std::uint64_t map_size = 0;
    std::uint64_t map_key = 0;
    std::uint32_t version = 0;
    const uefi::Status status =
        firmware.boot->GetMemoryMap(&map_size, nullptr, &map_key, &descriptor_size, &version);
    if (status != uefi::buffer_too_small) return 0;
    if (descriptor_size < sizeof(uefi::MemoryDescriptor) || descriptor_size > uefi::page_size) return 0;
    if (map_size > largest_map) return 0;
    return map_size + spare_descriptors * descriptor_size;
}

}  // namespace

MemoryMapCache memory_map_cache;

const char* memory_type_name(std::uint32_t type) {
    return type < type_names.size() ? type_names[type] : "Unknown";
}

bool allows(Access access, std::uint32_t type) {
    switch (static_cast<MemoryType>(type)) {
        case MemoryType::EfiLoaderData:
        case MemoryType::EfiBootServicesData:
        case MemoryType::EfiConventionalMemory:
            return true;
        case MemoryType::EfiReservedMemoryType:
        case MemoryType::EfiUnusableMemory:
        case MemoryType::EfiMemoryMappedIO:
        case MemoryType::EfiMemoryMappedIOPortSpace:
        case MemoryType::EfiPalCode:
            return false;
        default:
            return access == Access::read;
    }
}

MemoryMapView::MemoryMapView(const std::uint8_t* descriptors, std::uint64_t bytes,
                             std::uint64_t descriptor_size)
    : descriptors_(descriptors), descriptor_size_(descriptor_size) {
    if (descriptor_size >= sizeof(uefi::MemoryDescriptor)) count_ = bytes / descriptor_size;
}

MemoryRegion MemoryMapView::region(std::size_t index) const {
    const auto descriptor = read_unaligned<uefi::MemoryDescriptor>(descriptors_ + index * descriptor_size_);
    MemoryRegion region{descriptor.PhysicalStart, descriptor.PhysicalStart, descriptor.NumberOfPages,
                        static_cast<std::uint32_t>(descriptor.Type), descriptor.Attribute};
    if (region.pages == 0) return region;
    const std::uint64_t pages_to_top = (top_of_memory - region.first) / uefi::page_size;
    region.last =
        region.pages > pages_to_top ? top_of_memory : region.first + region.pages * uefi::page_size - 1;
    return region;
}

std::optional<MemoryRegion> MemoryMapView::find(std::uint64_t address) const {
    for (std::size_t i = 0; i < count_; ++i) {
        const MemoryRegion candidate = region(i);
        if (candidate.contains(address)) return candidate;
    }
    return std::nullopt;
}

std::optional<MemoryRegion> MemoryMapView::uniform_range(std::uint64_t address) const {
    std::uint64_t lowest = 0;
    std::uint64_t highest = top_of_memory;
    for (std::size_t i = 0; i < count_; ++i) {
        MemoryRegion candidate = region(i);
        if (candidate.contains(address)) {
            candidate.first = std::max(candidate.first, lowest);
            candidate.last = std::min(candidate.last, highest);
            return candidate;
        }
        if (candidate.pages == 0) continue;
        // An earlier descriptor above or below the address takes precedence over the one still to be found.
        if (candidate.first > address) highest = std::min(highest, candidate.first - 1);
        if (candidate.last < address) lowest = std::max(lowest, candidate.last + 1);
    }
    return std::nullopt;
}

std::uint64_t MemoryMapView::run_up(Access access, std::uint64_t address, std::uint64_t limit) const {
    std::uint64_t run = 0;
    while (run < limit) {
        const auto range = uniform_range(address + run);
        if (!range || !allows(access, range->type)) break;
        // One less than the bytes left in the range, which may be all 2^64.
        const std::uint64_t beyond_first = range->last - (address + run);
        if (beyond_first >= limit - run - 1) return limit;
        run += beyond_first + 1;
    }
    return run;
}

std::uint64_t MemoryMapView::run_down(Access access, std::uint64_t address, std::uint64_t limit) const {
    std::uint64_t run = 0;
    while (run < limit) {
        const auto range = uniform_range(address - run);
        if (!range || !allows(access, range->type)) break;
        const std::uint64_t beyond_first = (address - run) - range->first;
        if (beyond_first >= limit - run - 1) return limit;
        run += beyond_first + 1;
    }
    return run;
}

MemoryMapSnapshot::MemoryMapSnapshot(std::uint64_t spare_descriptors) {
    std::uint64_t descriptor_size = 0;
    const std::uint64_t wanted = wanted_buffer_size(spare_descriptors, descriptor_size);
    if (wanted == 0) return;
    buffer_.emplace(wanted);
    if (!*buffer_) return;
    std::uint64_t map_size = wanted;
    std::uint64_t map_key = 0;
    std::uint32_t version = 0;
    auto* descriptors = reinterpret_cast<uefi::MemoryDescriptor*>(buffer_->data());
    const uefi::Status status =
        firmware.boot->GetMemoryMap(&map_size, descriptors, &map_key, &descriptor_size, &version);
    valid_ = !uefi::is_error(status) && map_size <= wanted;
    if (valid_) view_ = MemoryMapView(buffer_->data(), map_size, descriptor_size);
}

MemoryMapView MemoryMapSnapshot::keep() {
    if (buffer_) buffer_->release();
    return view_;
}

void initialize_memory_map() {
    memory_map_cache = {};
}

const MemoryMapView& cached_memory_map() {
    if (!memory_map_cache.taken) {
        MemoryMapSnapshot snapshot;
        if (snapshot) {
            memory_map_cache.view = snapshot.keep();
            memory_map_cache.taken = true;
        }
    }
    return memory_map_cache.view;
}

std::uint64_t accessible_run_up(Access access, std::uint64_t address, std::uint64_t limit) {
    return cached_memory_map().run_up(access, address, limit);
}

std::uint64_t accessible_run_down(Access access, std::uint64_t address, std::uint64_t limit) {
    return cached_memory_map().run_down(access, address, limit);
}

}  // namespace korvane
