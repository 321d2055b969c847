#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/firmware.h"
#include "program/arenas.h"

namespace korvane {
namespace {

constexpr std::uint64_t descriptor_bytes = 48;  // more than the record's own, as firmware has it

// A firmware whose memory map grows between the question how long it is and the answer.
struct GrowingMap {
    uefi::BootServices boot{};
    std::vector<uefi::MemoryDescriptor> regions;
    std::size_t grown = 0;  // descriptors that the second answer has more
    bool address_is_taken = false;
    std::uint64_t pool_bytes = 0;
    void* pool = nullptr;
    std::vector<std::uint64_t> pages;
    static inline GrowingMap* self;

    GrowingMap() {
        self = this;
        boot.GetMemoryMap = get_map;
        boot.AllocatePool = [](uefi::MemoryType, std::uint64_t size, void** buffer) EFIAPI -> uefi::Status {
            self->pool_bytes = size;
            *buffer = self->pool = std::malloc(size);
            return uefi::success;
        };
        boot.FreePool = [](void*) EFIAPI -> uefi::Status { return uefi::success; };
        boot.AllocatePages = [](uefi::AllocateType type, uefi::MemoryType, std::uint64_t count,
                                uefi::PhysicalAddress* address) EFIAPI -> uefi::Status {
            self->pages.push_back(count);
            if (type != uefi::AllocateType::AllocateAddress) *address = 0x70000000;
            return type == uefi::AllocateType::AllocateAddress && self->address_is_taken ? uefi::device_error
                                                                                         : uefi::success;
        };
        firmware.boot = &boot;
        arenas = Arenas{};
    }
    ~GrowingMap() {
        std::free(pool);
        arenas = Arenas{};
        firmware = {};
    }
    GrowingMap(const GrowingMap&) = delete;
    GrowingMap& operator=(const GrowingMap&) = delete;

    void add(uefi::MemoryType type, std::uint64_t start, std::uint64_t count) {
        uefi::MemoryDescriptor region{};
        region.Type = type;
        region.PhysicalStart = start;
        region.NumberOfPages = count;
        regions.push_back(region);
    }

    static uefi::Status EFIAPI get_map(std::uint64_t* size, uefi::MemoryDescriptor* map, std::uint64_t*,
                                       std::uint64_t* descriptor_size, std::uint32_t*) {
        *descriptor_size = descriptor_bytes;
        const std::size_t count = self->regions.size() + (self->pool == nullptr ? 0 : self->grown);
        const std::uint64_t room = *size;
        *size = count * descriptor_bytes;
        if (room < *size) return uefi::buffer_too_small;
        std::memset(map, 0, *size);
        for (std::size_t i = 0; i < self->regions.size(); ++i)
            std::memcpy(reinterpret_cast<std::uint8_t*>(map) + i * descriptor_bytes, &self->regions[i],
                        sizeof(uefi::MemoryDescriptor));
        return uefi::success;
    }
};

using uefi::MemoryType;

TEST(DataArena, TheMapMayGrowByTwoDescriptors) {
    for (const std::size_t grown : {0U, 1U, 2U, 3U}) {
        GrowingMap map;
        map.add(MemoryType::EfiConventionalMemory, 0x100000, 500);
        map.add(MemoryType::EfiLoaderCode, 0x900000, 9000);
        map.grown = grown;
        EXPECT_EQ(allocate_data_arena(), grown <= 2) << grown;
        EXPECT_EQ(map.pool_bytes, 4 * descriptor_bytes);
    }
}

TEST(DataArena, IsTheFirstOfTheLargestFreeRegions) {
    GrowingMap map;
    map.add(MemoryType::EfiConventionalMemory, 0x100000, 10);
    map.add(MemoryType::EfiLoaderData, 0x200000, 999);
    map.add(MemoryType::EfiConventionalMemory, 0x40000000, 20);
    map.add(MemoryType::EfiConventionalMemory, 0x300000, 20);
    map.add(MemoryType::EfiConventionalMemory, 0x400000, 19);
    EXPECT_TRUE(allocate_data_arena());
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(arenas.LOMEM), 0x40000000U);
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(arenas.HIMEM), 0x40000000U + 20 * 4096);
    EXPECT_EQ(map.pages, std::vector<std::uint64_t>{20});
}

TEST(DataArena, LiesElsewhereWhenTheRegionIsTaken) {
    GrowingMap map;
    map.add(MemoryType::EfiConventionalMemory, 0x100000, 10);
    map.address_is_taken = true;
    EXPECT_TRUE(allocate_data_arena());
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(arenas.LOMEM), 0x70000000U);
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(arenas.HIMEM), 0x70000000U + 10 * 4096);
    EXPECT_EQ(map.pages, (std::vector<std::uint64_t>{10, 10}));
}

}  // namespace
}  // namespace korvane
