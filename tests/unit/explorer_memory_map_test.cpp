#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "explorer/memory/memory_range.h"
#include "platform/memory_map.h"

namespace korvane {
namespace {

constexpr std::uint64_t top = 0xFFFFFFFFFFFFFFFF;

enum Type : std::uint32_t {
    reserved = 0,
    loader_code = 1,
    loader_data = 2,
    boot_data = 4,
    conventional = 7,
    mmio = 11,
};

// A map as firmware writes it, with descriptors larger than the record.
class TestMap {
  public:
    explicit TestMap(std::uint64_t stride = 48) : stride_(stride) {}

    TestMap& add(std::uint32_t type, std::uint64_t start, std::uint64_t pages, std::uint64_t attributes = 0) {
        const uefi::MemoryDescriptor descriptor{static_cast<uefi::MemoryType>(type), start, 0, pages,
                                                attributes};
        bytes_.resize(bytes_.size() + stride_, 0xEE);
        std::memcpy(bytes_.data() + bytes_.size() - stride_, &descriptor, sizeof descriptor);
        return *this;
    }
    MemoryMapView view() const { return {bytes_.data(), bytes_.size(), stride_}; }

  private:
    std::uint64_t stride_;
    std::vector<std::uint8_t> bytes_;
};

TEST(MemoryMap, TypesHaveTheirNames) {
    const char* const names[] = {"Reserved",    "LoaderCode",  "LoaderData",   "BootCode", "BootData",
                                 "RuntimeCode", "RuntimeData", "Conventional", "Unusable", "ACPIReclaim",
                                 "ACPINVS",     "MMIO",        "MMIOPort",     "PalCode",  "Persistent"};
    for (std::uint32_t type = 0; type < 15; ++type)
        EXPECT_STREQ(memory_type_name(type), names[type]);
    EXPECT_STREQ(memory_type_name(15), "Unknown");
    EXPECT_STREQ(memory_type_name(0x80000000), "Unknown");
}

TEST(MemoryMap, FiveTypesAreNotReadable) {
    for (std::uint32_t type = 0; type < 20; ++type) {
        const bool forbidden = type == 0 || type == 8 || type == 11 || type == 12 || type == 13;
        EXPECT_EQ(allows(Access::read, type), !forbidden) << type;
    }
}

TEST(MemoryMap, OnlyThreeTypesAreWritable) {
    for (std::uint32_t type = 0; type < 20; ++type)
        EXPECT_EQ(allows(Access::write, type), type == 2 || type == 4 || type == 7) << type;
}

TEST(MemoryMap, DescriptorsAreSteppedByTheSizeTheFirmwareReports) {
    const TestMap map = TestMap(56).add(conventional, 0x1000, 1).add(reserved, 0x5000, 2, 0xF);
    ASSERT_EQ(map.view().count(), 2u);
    EXPECT_EQ(map.view().region(1).first, 0x5000u);
    EXPECT_EQ(map.view().region(1).last, 0x6FFFu);
    EXPECT_EQ(map.view().region(1).attributes, 0xFu);
}

TEST(MemoryMap, RegionContainsItsLastByteAndNotTheNext) {
    const TestMap map = TestMap().add(conventional, 0x1000, 1);
    EXPECT_FALSE(map.view().find(0xFFF));
    EXPECT_TRUE(map.view().find(0x1000));
    EXPECT_TRUE(map.view().find(0x1FFF));
    EXPECT_FALSE(map.view().find(0x2000));
}

TEST(MemoryMap, FirstRegionInMapOrderCounts) {
    const TestMap map = TestMap().add(mmio, 0x2000, 1).add(conventional, 0x1000, 4);
    EXPECT_EQ(map.view().find(0x2000)->type, mmio);
    EXPECT_EQ(map.view().find(0x1000)->type, conventional);
}

TEST(MemoryMap, ImpossibleDescriptorsDoNoHarm) {
    const TestMap map = TestMap()
                            .add(conventional, 0x1000, 0)
                            .add(conventional, 0xFFFFFFFFFFFFF000, top)
                            .add(conventional, 0x8000, 0x10000000000000);
    EXPECT_EQ(map.view().region(1).last, top);
    EXPECT_EQ(map.view().region(2).last, top);
    EXPECT_FALSE(map.view().find(0x1000));
    EXPECT_TRUE(map.view().find(top));
    EXPECT_EQ(map.view().run_up(Access::write, 0x8000, top - 0x8000), top - 0x8000);
    EXPECT_EQ(map.view().run_up(Access::write, 0x8000, top - 0x8000 + 1), top - 0x8000 + 1);
    EXPECT_EQ(map.view().run_down(Access::write, top, top), top - 0x8000 + 1);
}

TEST(MemoryMap, DescriptorSmallerThanTheRecordGivesNoRegions) {
    const std::vector<std::uint8_t> bytes(400, 0);
    EXPECT_EQ(MemoryMapView(bytes.data(), bytes.size(), 39).count(), 0u);
    EXPECT_EQ(MemoryMapView(bytes.data(), bytes.size(), 0).count(), 0u);
    EXPECT_EQ(MemoryMapView(bytes.data(), 79, 40).count(), 1u);
}

TEST(MemoryMap, RunsJoinAccessibleNeighbours) {
    const TestMap map = TestMap()
                            .add(loader_data, 0x3000, 1)
                            .add(conventional, 0x1000, 2)
                            .add(loader_code, 0x4000, 1)
                            .add(boot_data, 0x6000, 1);
    const MemoryMapView view = map.view();
    EXPECT_EQ(view.run_up(Access::write, 0x1000, 0x10000), 0x3000u);
    EXPECT_EQ(view.run_up(Access::read, 0x1000, 0x10000), 0x4000u);
    EXPECT_EQ(view.run_up(Access::read, 0x1800, 0x10), 0x10u);
    EXPECT_EQ(view.run_up(Access::read, 0x5000, 0x10), 0u);
    EXPECT_EQ(view.run_up(Access::read, 0x1000, 0), 0u);
    EXPECT_EQ(view.run_down(Access::write, 0x3FFF, 0x10000), 0x3000u);
    EXPECT_EQ(view.run_down(Access::write, 0x4000, 0x10000), 0u);
    EXPECT_EQ(view.run_down(Access::read, 0x4FFF, 0x10000), 0x4000u);
    EXPECT_EQ(view.run_down(Access::read, 0x1004, 0x10), 5u);
}

TEST(MemoryMap, EarlierOverlappingRegionInterruptsARun) {
    const TestMap map = TestMap().add(mmio, 0x3000, 1).add(conventional, 0x1000, 8);
    EXPECT_EQ(map.view().run_up(Access::read, 0x1000, 0x8000), 0x2000u);
    EXPECT_EQ(map.view().run_down(Access::read, 0x8FFF, 0x8000), 0x5000u);
    const TestMap reversed = TestMap().add(conventional, 0x1000, 8).add(mmio, 0x3000, 1);
    EXPECT_EQ(reversed.view().run_up(Access::read, 0x1000, 0x8000), 0x8000u);
}

// The runs agree with a test of every single page, whatever the map.
TEST(MemoryMap, RunsAgreeWithASearchPageByPage) {
    std::uint32_t random = 12345;
    const auto draw = [&random](std::uint32_t limit) {
        random = random * 1664525 + 1013904223;
        return (random >> 8) % limit;
    };
    constexpr std::uint64_t pages = 24;
    for (int round = 0; round < 300; ++round) {
        TestMap map;
        const std::uint32_t regions = draw(6);
        for (std::uint32_t i = 0; i < regions; ++i)
            map.add(draw(16), draw(pages) * 4096, draw(8));
        const MemoryMapView view = map.view();
        for (const Access access : {Access::read, Access::write}) {
            const auto accessible = [&](std::uint64_t page) {
                const auto region = view.find(page * 4096);
                return region && allows(access, region->type);
            };
            for (std::uint64_t page = 0; page < pages; ++page) {
                std::uint64_t up = page;
                while (up < pages && accessible(up))
                    ++up;
                ASSERT_EQ(view.run_up(access, page * 4096, (pages - page) * 4096), (up - page) * 4096);
                std::uint64_t down = 0;
                while (down <= page && accessible(page - down))
                    ++down;
                ASSERT_EQ(view.run_down(access, page * 4096 + 4095, (page + 1) * 4096), down * 4096);
            }
        }
    }
}

TEST(MemoryRange, TheTopByteIsInsideTheAddressSpace) {
    EXPECT_TRUE(fits_address_space(0xFFFFFFFFFFFFFFF0, 0x10));
    EXPECT_FALSE(fits_address_space(0xFFFFFFFFFFFFFFF0, 0x11));
    EXPECT_TRUE(fits_address_space(top, 1));
    EXPECT_FALSE(fits_address_space(top, 2));
    EXPECT_TRUE(fits_address_space(top, 0));
    EXPECT_TRUE(fits_address_space(0, top));
    EXPECT_FALSE(fits_address_space(2, top));
}

}  // namespace
}  // namespace korvane
