#include <cstring>
#include <vector>

#include "hosted_machine.h"

namespace korvane::host {
namespace {

using uefi::AllocateType;
using uefi::MemoryType;

constexpr std::uint64_t region = 0x20000000;

class HostedMemoryTest : public HostedFirmwareTest {
  protected:
    void SetUp() override {
        Config config;
        config.memory = {{region, 16, MemoryType::EfiConventionalMemory},
                         {region + 0x10000, 4, MemoryType::EfiReservedMemoryType}};
        start(config);
    }

    uefi::Status allocate(AllocateType how, std::uint64_t pages, std::uint64_t& address) {
        return boot().AllocatePages(how, MemoryType::EfiLoaderData, pages, &address);
    }

    MemoryType type_at(std::uint64_t address) {
        for (const MemoryRegion& known : firmware_->memory().regions())
            if (address - known.base < known.pages * uefi::page_size) return known.type;
        return MemoryType::EfiUnusableMemory;
    }
};

TEST_F(HostedMemoryTest, AnyPagesComeFromTheTop) {
    std::uint64_t address = 0;
    ASSERT_EQ(allocate(AllocateType::AllocateAnyPages, 2, address), uefi::success);
    EXPECT_EQ(address, region + 14 * uefi::page_size);
    std::memset(reinterpret_cast<void*>(address), 1, 2 * uefi::page_size);
    EXPECT_EQ(type_at(address), MemoryType::EfiLoaderData);
    EXPECT_EQ(type_at(address - 1), MemoryType::EfiConventionalMemory);
    EXPECT_EQ(firmware_->memory().allocated_pages(), 2U);
}

TEST_F(HostedMemoryTest, ThereIsNoMoreThanThereIs) {
    std::uint64_t address = 0;
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 17, address), uefi::out_of_resources);
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 16, address), uefi::success);
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 1, address), uefi::out_of_resources);
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, ~std::uint64_t{0}, address), uefi::not_found);
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 0, address), uefi::not_found);
}

TEST_F(HostedMemoryTest, AnAddressIsGivenOnce) {
    std::uint64_t address = region;
    EXPECT_EQ(allocate(AllocateType::AllocateAddress, 4, address), uefi::success);
    EXPECT_EQ(address, region);
    address = region + 3 * uefi::page_size;
    EXPECT_EQ(allocate(AllocateType::AllocateAddress, 4, address), uefi::not_found);
    address = region + 4 * uefi::page_size;
    EXPECT_EQ(allocate(AllocateType::AllocateAddress, 13, address), uefi::not_found);
    EXPECT_EQ(allocate(AllocateType::AllocateAddress, 12, address), uefi::success);
    address = region + 0x10000;
    EXPECT_EQ(allocate(AllocateType::AllocateAddress, 1, address), uefi::not_found);
    address = region + 1;
    EXPECT_EQ(allocate(AllocateType::AllocateAddress, 1, address), uefi::not_found);
}

TEST_F(HostedMemoryTest, TheHighestAddressIsRespected) {
    std::uint64_t address = region + 3 * uefi::page_size - 1;
    ASSERT_EQ(allocate(AllocateType::AllocateMaxAddress, 2, address), uefi::success);
    EXPECT_EQ(address, region + uefi::page_size);
    address = region + uefi::page_size;
    EXPECT_EQ(allocate(AllocateType::AllocateMaxAddress, 2, address), uefi::out_of_resources);
}

TEST_F(HostedMemoryTest, FreedPagesAreConventionalAgain) {
    std::uint64_t address = 0;
    ASSERT_EQ(allocate(AllocateType::AllocateAnyPages, 4, address), uefi::success);
    EXPECT_EQ(boot().FreePages(address + uefi::page_size, 2), uefi::success);
    EXPECT_EQ(type_at(address), MemoryType::EfiLoaderData);
    EXPECT_EQ(type_at(address + uefi::page_size), MemoryType::EfiConventionalMemory);
    EXPECT_EQ(boot().FreePages(address + uefi::page_size, 2), uefi::not_found);
    EXPECT_EQ(firmware_->complaints().size(), 1U);
    EXPECT_EQ(firmware_->memory().allocated_pages(), 2U);
}

TEST_F(HostedMemoryTest, TheMapTellsItsSizeAndItsStride) {
    std::uint64_t size = 0;
    std::uint64_t key = 0;
    std::uint64_t stride = 0;
    std::uint32_t version = 0;
    EXPECT_EQ(boot().GetMemoryMap(&size, nullptr, &key, &stride, &version), uefi::buffer_too_small);
    EXPECT_EQ(stride, 48U);
    EXPECT_GT(stride, sizeof(uefi::MemoryDescriptor));
    EXPECT_EQ(size % stride, 0U);
    std::vector<std::uint8_t> map(size + 1, 0x77);
    std::uint64_t small = size - 1;
    auto* records = reinterpret_cast<uefi::MemoryDescriptor*>(map.data());
    EXPECT_EQ(boot().GetMemoryMap(&small, records, &key, &stride, &version), uefi::buffer_too_small);
    EXPECT_EQ(small, size);
    EXPECT_EQ(map.front(), 0x77);
    EXPECT_EQ(boot().GetMemoryMap(&size, records, &key, &stride, &version), uefi::success);
    EXPECT_EQ(map.back(), 0x77);

    bool found = false;
    for (std::uint64_t at = 0; at < size; at += stride) {
        uefi::MemoryDescriptor descriptor;
        std::memcpy(&descriptor, map.data() + at, sizeof descriptor);
        if (descriptor.PhysicalStart != region) continue;
        found = true;
        EXPECT_EQ(descriptor.Type, MemoryType::EfiConventionalMemory);
        EXPECT_EQ(descriptor.NumberOfPages, 16U);
    }
    EXPECT_TRUE(found);
}

TEST_F(HostedMemoryTest, PoolBuffersAreWatched) {
    void* buffer = nullptr;
    ASSERT_EQ(boot().AllocatePool(MemoryType::EfiLoaderData, 5, &buffer), uefi::success);
    EXPECT_EQ(reinterpret_cast<std::uint64_t>(buffer) % 16, 8U);
    EXPECT_NE(static_cast<std::uint8_t*>(buffer)[0], 0);
    EXPECT_EQ(firmware_->pool().buffers(), 1U);
    EXPECT_TRUE(firmware_->complaints().empty());
    static_cast<std::uint8_t*>(buffer)[5] = 0;
    EXPECT_EQ(firmware_->complaints().size(), 1U);
    EXPECT_EQ(boot().FreePool(buffer), uefi::success);
    EXPECT_EQ(firmware_->complaints().size(), 1U);
    EXPECT_EQ(boot().FreePool(buffer), uefi::invalid_parameter);
    EXPECT_EQ(firmware_->complaints().size(), 2U);
    EXPECT_EQ(firmware_->pool().buffers(), 0U);
}

TEST_F(HostedMemoryTest, ThePoolIsUsedAgain) {
    void* first = nullptr;
    void* second = nullptr;
    void* third = nullptr;
    ASSERT_EQ(boot().AllocatePool(MemoryType::EfiLoaderData, 100, &first), uefi::success);
    ASSERT_EQ(boot().AllocatePool(MemoryType::EfiLoaderData, 100, &second), uefi::success);
    ASSERT_EQ(boot().FreePool(first), uefi::success);
    ASSERT_EQ(boot().AllocatePool(MemoryType::EfiLoaderData, 100, &third), uefi::success);
    EXPECT_EQ(third, first);
    EXPECT_EQ(boot().AllocatePool(MemoryType::EfiLoaderData, pool_size, &third), uefi::out_of_resources);
    EXPECT_EQ(boot().AllocatePool(MemoryType::EfiLoaderData, 1, nullptr), uefi::invalid_parameter);
    EXPECT_TRUE(firmware_->complaints().empty());
}

TEST_F(HostedMemoryTest, AUseOfAServiceFailsOnDemand) {
    std::uint64_t address = 0;
    firmware_->faults().arm({{Service::AllocatePages, 2, 1, uefi::aborted}});
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 1, address), uefi::success);
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 1, address), uefi::aborted);
    EXPECT_EQ(allocate(AllocateType::AllocateAnyPages, 1, address), uefi::success);
    EXPECT_EQ(firmware_->faults().strikes(), 1U);
    EXPECT_EQ(firmware_->faults().uses(Service::AllocatePages), 3U);
}

}  // namespace
}  // namespace korvane::host
