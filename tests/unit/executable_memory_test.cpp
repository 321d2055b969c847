#include "native/executable_memory.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <vector>

#include "hosted_machine.h"
#include "platform/firmware.h"

namespace korvane::native {
namespace {

using host::CodeMemory;
using host::Service;

constexpr std::byte return_seven[] = {std::byte{0xB8}, std::byte{7}, std::byte{0},
                                      std::byte{0},    std::byte{0}, std::byte{0xC3}};

class ExecutableMemoryTest : public host::HostedFirmwareTest {
  protected:
    void SetUp() override { enter({}); }

    void enter(host::Config config) {
        start(std::move(config));
        firmware_start(firmware_->image_handle(), firmware_->system_table());
    }

    // Writes a function that gives seven. Null when that was refused.
    int (*make_function())() {
        const std::span<std::byte> memory = memory_.begin_writing();
        if (memory.empty()) return nullptr;
        std::memcpy(memory.data(), return_seven, sizeof return_seven);
        function_ = reinterpret_cast<int (*)()>(memory.data());
        return memory_.end_writing() ? function_ : nullptr;
    }

    void expect_nothing_left() {
        EXPECT_EQ(firmware_->memory().allocated_pages(), 0U);
        EXPECT_EQ(firmware_->complaints(), std::vector<std::string>{});
    }

    // True when the process dies of calling what was written last.
    bool dies_of_calling() {
        return dies_of([this] { function_(); });
    }

    // True when the process may not do that with the memory.
    template <typename Work>
    bool dies_of(const Work& work) {
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGSEGV, SIG_DFL);  // the sanitizers' handler ends the process in another way
            work();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
    }

    ExecutableMemory memory_;
    int (*function_)() = nullptr;
};

TEST_F(ExecutableMemoryTest, NothingIsTakenBeforeItIsAskedFor) {
    EXPECT_EQ(firmware_->memory().allocated_pages(), 0U);
    EXPECT_TRUE(memory_.begin_writing().empty());
    EXPECT_FALSE(memory_.end_writing());
    EXPECT_FALSE(memory_.grow());
    EXPECT_EQ(firmware_->faults().uses(Service::LocateProtocol), 0U);
}

TEST_F(ExecutableMemoryTest, WhatIsWrittenRuns) {
    ASSERT_TRUE(memory_.take());
    EXPECT_TRUE(memory_.take());
    EXPECT_EQ(firmware_->memory().allocated_pages() * uefi::page_size, first_code_bytes);
    EXPECT_EQ(firmware_->faults().uses(Service::AllocatePages), 1U);
    EXPECT_EQ(memory_.begin_writing().size(), first_code_bytes);
    ASSERT_TRUE(memory_.end_writing());
    ASSERT_NE(make_function(), nullptr);
    EXPECT_EQ(function_(), 7);
    memory_.give_back();
    expect_nothing_left();
}

TEST_F(ExecutableMemoryTest, ItIsNeverWritableAndExecutable) {
    ASSERT_TRUE(memory_.take());
    const std::span<std::byte> memory = memory_.begin_writing();
    std::memcpy(memory.data(), return_seven, sizeof return_seven);
    function_ = reinterpret_cast<int (*)()>(memory.data());
    EXPECT_TRUE(dies_of_calling());
    ASSERT_TRUE(memory_.end_writing());
    EXPECT_FALSE(dies_of_calling());
    EXPECT_TRUE(dies_of([&] { *const_cast<volatile std::byte*>(memory.data()) = std::byte{0}; }));
    EXPECT_EQ(firmware_->complaints(), std::vector<std::string>{});
}

TEST_F(ExecutableMemoryTest, OnlyThePagesThatAreWrittenChange) {
    ASSERT_TRUE(memory_.take());
    ASSERT_NE(make_function(), nullptr);
    constexpr std::size_t place = uefi::page_size + 100;
    const std::span<std::byte> memory = memory_.begin_writing(place, sizeof return_seven);
    ASSERT_EQ(memory.size(), sizeof return_seven);
    EXPECT_EQ(function_(), 7);
    EXPECT_TRUE(dies_of([&] { *reinterpret_cast<volatile std::byte*>(function_) = std::byte{0}; }));
    std::memcpy(memory.data(), return_seven, sizeof return_seven);
    EXPECT_EQ(reinterpret_cast<std::byte*>(function_) + place, memory.data());
    function_ = reinterpret_cast<int (*)()>(memory.data());
    EXPECT_TRUE(dies_of_calling());
    ASSERT_TRUE(memory_.end_writing());
    EXPECT_EQ(function_(), 7);
    memory_.give_back();
    expect_nothing_left();
}

TEST_F(ExecutableMemoryTest, WritingEndsWhereTheMemoryDoes) {
    ASSERT_TRUE(memory_.take());
    for (int round = 0; round != 2; ++round) {  // the first time all pages change, then the written ones
        EXPECT_EQ(memory_.begin_writing(first_code_bytes - 10, 50).size(), 10U);
        EXPECT_TRUE(memory_.end_writing());
        EXPECT_EQ(memory_.begin_writing(first_code_bytes, 50).size(), 0U);
        EXPECT_TRUE(memory_.end_writing());
    }
    EXPECT_NE(make_function(), nullptr);
    memory_.give_back();
    expect_nothing_left();
}

TEST_F(ExecutableMemoryTest, ItGrowsToFourTimesItsSize) {
    ASSERT_TRUE(memory_.take());
    ASSERT_NE(make_function(), nullptr);
    int (*const first)() = function_;
    for (const std::uint64_t more : {first_code_bytes, 2 * first_code_bytes}) {
        EXPECT_TRUE(memory_.grow());
        EXPECT_EQ(memory_.begin_writing().size(), more);
        EXPECT_EQ(first(), 7);  // what has been written stays
        EXPECT_TRUE(memory_.end_writing());
        ASSERT_NE(make_function(), nullptr);
        EXPECT_NE(function_, first);
        EXPECT_EQ(function_(), 7);
        EXPECT_EQ(first(), 7);
    }
    EXPECT_FALSE(memory_.grow());
    EXPECT_EQ(firmware_->memory().allocated_pages() * uefi::page_size, most_code_bytes);
    memory_.give_back();
    expect_nothing_left();
}

TEST_F(ExecutableMemoryTest, StartingOverTakesNoMore) {
    ASSERT_TRUE(memory_.take());
    ASSERT_NE(make_function(), nullptr);
    int (*const first)() = function_;
    for (int round = 0; round != 3; ++round) {
        memory_.start_over();
        ASSERT_NE(make_function(), nullptr);
        EXPECT_EQ(function_, first);
        EXPECT_TRUE(memory_.grow());
        EXPECT_TRUE(memory_.grow());
        EXPECT_FALSE(memory_.grow());
        ASSERT_NE(make_function(), nullptr);
        EXPECT_EQ(function_(), 7);
    }
    EXPECT_EQ(firmware_->memory().allocated_pages() * uefi::page_size, most_code_bytes);
    memory_.give_back();
    expect_nothing_left();
}

TEST_F(ExecutableMemoryTest, WithoutMoreMemoryItStaysAsItIs) {
    ASSERT_TRUE(memory_.take());
    ASSERT_NE(make_function(), nullptr);
    firmware_->faults().arm({{Service::AllocatePages}});
    EXPECT_FALSE(memory_.grow());
    EXPECT_EQ(function_(), 7);
    firmware_->faults().arm({{Service::MemoryAttributesGet}});
    EXPECT_FALSE(memory_.grow());
    EXPECT_EQ(function_(), 7);
    EXPECT_EQ(firmware_->memory().allocated_pages() * uefi::page_size, first_code_bytes);
    EXPECT_TRUE(memory_.grow());
    EXPECT_NE(make_function(), nullptr);
}

TEST_F(ExecutableMemoryTest, GivenBackItIsNotTakenAgain) {
    ASSERT_TRUE(memory_.take());
    memory_.give_back();
    memory_.give_back();
    EXPECT_FALSE(memory_.take());
    EXPECT_TRUE(memory_.begin_writing().empty());
    expect_nothing_left();
    memory_.forget();
    EXPECT_TRUE(memory_.take());
}

// The protocol is missing, and this process has no right to look at the processor's tables.
TEST_F(ExecutableMemoryTest, WithoutTheProtocolThereIsNone) {
    host::Config config;
    config.code_memory = CodeMemory::hidden;
    enter(config);
    EXPECT_FALSE(memory_.take());
    EXPECT_FALSE(memory_.take());
    EXPECT_EQ(firmware_->faults().uses(Service::AllocatePages), 1U);
    expect_nothing_left();
}

TEST_F(ExecutableMemoryTest, RefusedProtectionsAreTheEnd) {
    host::Config config;
    config.code_memory = CodeMemory::refused;
    enter(config);
    EXPECT_TRUE(memory_.take());
    EXPECT_TRUE(memory_.begin_writing().empty());
    EXPECT_FALSE(memory_.take());
    EXPECT_FALSE(memory_.end_writing());
    expect_nothing_left();
}

// Each service at each of its uses, once and for good: afterwards there is code that runs, or none; what the
// firmware could put back is back, and no page went back as it should not.
TEST_F(ExecutableMemoryTest, EveryRefusalIsOnlyARefusal) {
    constexpr Service used[] = {Service::LocateProtocol,      Service::AllocatePages,
                                Service::FreePages,           Service::MemoryAttributesGet,
                                Service::MemoryAttributesSet, Service::MemoryAttributesClear};
    for (const Service service : used)
        for (std::uint64_t use = 1; use <= 8; ++use)
            for (const std::uint64_t times : {1U, 1000U}) {
                SCOPED_TRACE(std::string(host::service_name(service)) + ' ' + std::to_string(use) + ' ' +
                             std::to_string(times));
                enter({});
                memory_.forget();
                firmware_->faults().arm({{service, use, times, uefi::unsupported}});
                const bool taken = memory_.take();
                for (int round = 0; round < 2; ++round) {
                    function_ = make_function();
                    EXPECT_TRUE(taken || function_ == nullptr);
                    EXPECT_TRUE(function_ == nullptr || function_() == 7);
                    EXPECT_TRUE(memory_.grow() || function_ == nullptr || function_() == 7);
                }
                memory_.give_back();
                EXPECT_EQ(firmware_->complaints(), std::vector<std::string>{});
                const bool may_leave_pages =
                    service != Service::LocateProtocol && service != Service::AllocatePages;
                EXPECT_TRUE(may_leave_pages || firmware_->memory().allocated_pages() == 0);
            }
}

// Firmware that says that it has done what it has not.
TEST_F(ExecutableMemoryTest, AnEmptyPromiseIsFoundOut) {
    auto* const protocol = locate<uefi::MemoryAttributeProtocol>(uefi::memory_attribute_guid);
    ASSERT_NE(protocol, nullptr);
    protocol->ClearMemoryAttributes = protocol->SetMemoryAttributes =
        [](uefi::MemoryAttributeProtocol*, std::uint64_t, std::uint64_t, std::uint64_t)
            EFIAPI { return uefi::success; };
    ASSERT_TRUE(memory_.take());
    EXPECT_EQ(make_function(), nullptr);
    EXPECT_FALSE(memory_.take());
    expect_nothing_left();
}

}  // namespace
}  // namespace korvane::native
