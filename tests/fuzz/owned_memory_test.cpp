// What the fuzzer's firmware says it has handed out can be read, all of it, also when machine code has been
// made and its pages have changed hands; and nothing else is handed out. PEEK trusts it: it reads what is
// owned, and shows zeros for the rest.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "player.h"
#include "targets.h"

namespace korvane::fuzz {
namespace {

constexpr std::uint64_t page = uefi::page_size;
#ifdef MAKES_MACHINE_CODE
constexpr bool makes_code = true;
#else
constexpr bool makes_code = false;
#endif

// The kernel tells what may be read, without a fault.
bool can_be_read(std::uint64_t address) {
    static const std::array<int, 2> ends = [] {
        std::array<int, 2> made{};
        EXPECT_EQ(pipe(made.data()), 0);
        return made;
    }();
    if (write(ends[1], reinterpret_cast<const void*>(address), 1) != 1) return false;
    char byte = 0;
    return read(ends[0], &byte, 1) == 1;
}

bool peek_shows(std::uint64_t address, std::string_view value) {
    type("CLS:PRINT \"byte\";PEEK(" + std::to_string(address) + "&&)");
    return is_on_screen("byte " + std::string(value));
}

class OwnedMemory : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        static Machine the_machine;
        prepare(*find_target("session"), true);
    }
    void SetUp() override { begin_input(); }

    const Firmware& firmware() const { return machine->firmware(); }

    // Asks the firmware for pages, as the interpreter does.
    std::uint64_t allocate(std::uint64_t pages) const {
        std::uint64_t address = 0;
        const auto& boot = *machine->firmware().system_table()->BootServices;
        EXPECT_EQ(boot.AllocatePages(uefi::AllocateType::AllocateAnyPages, uefi::MemoryType::EfiLoaderData,
                                     pages, &address),
                  uefi::success);
        return address;
    }

    // All that may be handed out, and a page on each side.
    void expect_owned_is_readable() const {
        struct Room {
            std::uint64_t base;
            std::uint64_t size;
        };
        std::uint64_t owned = 0;
        for (const Room room : {Room{pages_base, pages_size}, Room{data_base, data_size},
                                Room{scratch_base, scratch_size}, Room{tables_base, tables_size}}) {
            EXPECT_FALSE(firmware().owns(room.base - 1, 1));
            EXPECT_FALSE(firmware().owns(room.base + room.size, 1));
            for (std::uint64_t at = room.base; at != room.base + room.size; at += page) {
                const bool is_owned = firmware().owns(at, 1);
                owned += is_owned ? 1 : 0;
                ASSERT_EQ(firmware().owns(at + page - 1, 1), is_owned) << std::hex << at;
                ASSERT_TRUE(!is_owned || can_be_read(at)) << std::hex << at;
                // What reaches into the next page is owned if that one is.
                const bool is_next_owned = firmware().owns(at + page, 1);
                ASSERT_EQ(firmware().owns(at + page - 4, 8), is_owned && is_next_owned) << std::hex << at;
            }
        }
        EXPECT_GT(owned, data_size / page);
    }
};

TEST_F(OwnedMemory, ThePageBehindABlockIsNobodys) {
    std::vector<std::uint64_t> sizes = {1, 3, 2};
    std::vector<std::uint64_t> blocks;
    for (const std::uint64_t pages : sizes)
        blocks.push_back(allocate(pages));
    for (std::size_t i = 0; i != blocks.size(); ++i) {
        const std::uint64_t end = blocks[i] + sizes[i] * page;
        EXPECT_TRUE(firmware().owns(blocks[i], sizes[i] * page));
        EXPECT_TRUE(firmware().owns(end - 1, 1));
        EXPECT_FALSE(firmware().owns(end, 1));
        EXPECT_FALSE(firmware().owns(end + page - 1, 1));
        EXPECT_FALSE(firmware().owns(end - 1, 2));
        EXPECT_FALSE(firmware().owns(blocks[i], sizes[i] * page + 1));
        // Whole pages of others lie in front of it, or none of anybody.
        EXPECT_FALSE(firmware().owns(blocks[i] - 1, 1));
        EXPECT_FALSE(firmware().owns(blocks[i] - 1, 2));
    }
    expect_owned_is_readable();
    // The other side of a guard is another block again.
    EXPECT_TRUE(firmware().owns(blocks[1] + sizes[1] * page + page, 1));
    EXPECT_FALSE(firmware().owns(blocks[1], (sizes[1] + 1 + sizes[0]) * page));
}

TEST_F(OwnedMemory, PeekShowsZerosAroundABlock) {
    const std::uint64_t block = allocate(1);
    auto* bytes = reinterpret_cast<std::uint8_t*>(block);
    bytes[0] = bytes[page - 1] = 77;
    EXPECT_TRUE(peek_shows(block, "77"));
    EXPECT_TRUE(peek_shows(block + page - 1, "77"));
    EXPECT_TRUE(peek_shows(block + page, "0"));
    EXPECT_TRUE(peek_shows(block + 2 * page - 1, "0"));
    EXPECT_TRUE(peek_shows(block - 1, "0"));
    check();
}

TEST_F(OwnedMemory, IsReadableWhenMachineCodeHasBeenMade) {
    expect_owned_is_readable();
    for (const char* line :
         {"10 DIM M(9)", "20 FOR I=1 TO 3000:M(I AND 7)=M(I AND 7)+I*2:NEXT", "RUN", "RUN"})
        ASSERT_TRUE(type(line)) << line;
    EXPECT_EQ(firmware().has_code(), makes_code);
    expect_owned_is_readable();
    ASSERT_TRUE(type("20 REM"));
    ASSERT_TRUE(type("NEW"));
    expect_owned_is_readable();
    begin_input();
    EXPECT_FALSE(firmware().has_code());
    expect_owned_is_readable();
    check();
}

}  // namespace
}  // namespace korvane::fuzz
