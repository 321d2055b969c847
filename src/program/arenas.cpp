#include "program/arenas.h"

#include "platform/firmware.h"
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
                                                    &address))) {
        return false;
    }
    arenas.CODEBASE = reinterpret_cast<std::uint8_t*>(address);
    arenas.CODEEND = arenas.CODEBASE + program_arena_size;
    return true;
}

namespace {

struct Region {
    uefi::PhysicalAddress start;
    std::uint64_t pages;
};

// The conventional region with the most pages; of equal ones the first.
Region largest_conventional_region(const std::uint8_t* map, std::uint64_t map_size,
                                   std::uint64_t descriptor_size) {
    Region largest{0, 0};
    for (std::uint64_t at = 0; at + sizeof(uefi::MemoryDescriptor) <= map_size; at += descriptor_size) {
        const auto& region = *reinterpret_cast<const uefi::MemoryDescriptor*>(map + at);
        if (region.Type == uefi::MemoryType::EfiConventionalMemory && region.NumberOfPages > largest.pages) {
            largest = {region.PhysicalStart, region.NumberOfPages};
        }
    }
    return largest;
}

// The firmware's memory map in a pool buffer that is kept for good: freeing it would change the map again.
bool find_largest_region(Region& largest) {
    std::uint64_t size = 0;
    std::uint64_t key = 0;
    std::uint64_t descriptor_size = 0;
    std::uint32_t version = 0;
    const uefi::Status probe = firmware.boot->GetMemoryMap(&size, nullptr, &key, &descriptor_size, &version);
    if (probe != uefi::buffer_too_small || descriptor_size < sizeof(uefi::MemoryDescriptor)) return false;
    // Allocating the buffer may itself add descriptors.
    size += 2 * descriptor_size;
    PoolBuffer buffer(size);
    if (!buffer) return false;
    auto* map = reinterpret_cast<uefi::MemoryDescriptor*>(buffer.data());
    if (uefi::is_error(firmware.boot->GetMemoryMap(&size, map, &key, &descriptor_size, &version)) ||
        descriptor_size < sizeof(uefi::MemoryDescriptor)) {
        return false;
    }
    largest = largest_conventional_region(buffer.release(), size, descriptor_size);
    return true;
}

}  // namespace

bool allocate_data_arena() {
    Region region{0, 0};
    if (!find_largest_region(region)) return false;
    uefi::PhysicalAddress address = region.start;
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
