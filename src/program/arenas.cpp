#include "program/arenas.h"

#include "platform/firmware.h"
#include "platform/memory_map.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

Arenas arenas;

std::uint64_t free_data_bytes() {
    return arenas.FREETOP < arenas.FREEBOT ? 0 : static_cast<std::uint64_t>(arenas.FREETOP - arenas.FREEBOT);
}

std::uint8_t* allocate_low(std::uint64_t bytes) {
    constexpr std::uint64_t alignment = 8;
    if (arenas.FREETOP < arenas.FREEBOT || bytes > ~std::uint64_t{0} - (alignment - 1)) return nullptr;
    const std::uint64_t rounded = (bytes + alignment - 1) & ~(alignment - 1);
    if (rounded > free_data_bytes()) return nullptr;
    std::uint8_t* block = arenas.FREEBOT;
    arenas.FREEBOT += rounded;
    return block;
}

std::uint8_t* allocate_string(std::uint64_t bytes) {
    if (bytes == 0) return arenas.FREETOP;
    if (arenas.FREETOP < arenas.FREEBOT || bytes > free_data_bytes()) {
        raise(message::out_of_string_space);
        return nullptr;
    }
    arenas.FREETOP -= bytes;
    return arenas.FREETOP;
}

bool allocate_program_arena() {
    uefi::PhysicalAddress address = 0;
    if (uefi::is_error(firmware.boot->AllocatePages(uefi::AllocateType::AllocateAnyPages,
                                                    uefi::MemoryType::EfiLoaderData, program_arena_pages,
                                                    &address)))
        return false;
    arenas.CODEBASE = reinterpret_cast<std::uint8_t*>(address);
    arenas.CODEEND = arenas.CODEBASE + program_arena_size;
    return true;
}

namespace {

// Descriptors that allocating the map's buffer may itself add.
constexpr std::uint64_t spare_descriptors = 2;

// The conventional region with the most pages; of equal ones the first; without pages when there is none.
MemoryRegion largest_conventional_region(const MemoryMapView& map) {
    MemoryRegion largest{};
    for (std::size_t i = 0; i < map.count(); ++i) {
        const MemoryRegion region = map.region(i);
        const auto type = static_cast<uefi::MemoryType>(region.type);
        if (type == uefi::MemoryType::EfiConventionalMemory && region.pages > largest.pages) largest = region;
    }
    return largest;
}

}  // namespace

bool allocate_data_arena() {
    MemoryMapSnapshot map(spare_descriptors);
    if (!map) return false;
    // The map is kept for good: giving its buffer back would change what it tells.
    const MemoryRegion region = largest_conventional_region(map.keep());
    uefi::PhysicalAddress address = region.first;
    if (uefi::is_error(firmware.boot->AllocatePages(
            uefi::AllocateType::AllocateAddress, uefi::MemoryType::EfiLoaderData, region.pages, &address))) {
        address = 0;
        // Deliberately unchecked: without the pages LOMEM stays 0 and there is nowhere else to go.
        firmware.boot->AllocatePages(uefi::AllocateType::AllocateAnyPages, uefi::MemoryType::EfiLoaderData,
                                     region.pages, &address);
    }
    arenas.LOMEM = reinterpret_cast<std::uint8_t*>(address);
    arenas.HIMEM = arenas.LOMEM + region.pages * page_size;
    return true;
}

void reset_data_arena() {
    ++arenas.generation;
    ++arenas.clears;
    arenas.VARTABLE = arenas.LOMEM;
    arenas.FREEBOT = arenas.LOMEM + variable_table_size;
    arenas.FREETOP = arenas.HIMEM;
}

}  // namespace korvane
