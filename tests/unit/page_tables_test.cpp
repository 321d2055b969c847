#include "native/page_tables.h"

#include <array>
#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

namespace korvane::native {
namespace {

constexpr std::uint64_t present = 1;
constexpr std::uint64_t writable = 2;
constexpr std::uint64_t user = 4;
constexpr std::uint64_t large = 0x80;
constexpr std::uint64_t no_execute = std::uint64_t{1} << 63;
constexpr std::uint64_t usual = present | writable;

// 0x40A03000 is entry 0 of level 4, 1 of level 3, 5 of level 2 and 3 of level 1.
constexpr std::uint64_t page = 0x40A03000;
constexpr std::uint64_t large_page = 0x40A00000;
constexpr std::uint64_t huge_page = 0x40000000;

struct alignas(4096) Table {
    std::array<std::uint64_t, 512> entries{};
    std::uint64_t address() const { return reinterpret_cast<std::uint64_t>(this); }
};

// Tables that lead to one page of 4 KiB and its neighbour, with the access that most firmware gives.
class PageTablesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        tables_[5].entries[0] = tables_[4].address() | usual;
        tables_[4].entries[0] = tables_[3].address() | usual;
        tables_[3].entries[1] = tables_[2].address() | usual;
        tables_[2].entries[5] = tables_[1].address() | usual;
        tables_[1].entries[3] = page | usual;
        tables_[1].entries[4] = (page + 4096) | usual;
    }

    // The entry that the page's address chooses on a level.
    std::uint64_t& entry(int level) {
        constexpr std::array<std::size_t, 6> chosen = {0, 3, 5, 1, 0, 0};
        const auto at = static_cast<std::size_t>(level);
        return tables_[at].entries[chosen[at]];
    }
    bool allowed(std::uint64_t bytes = 4096) {
        return allows_code({tables_[4].address() | 0x18, 4}, page, bytes);
    }
    bool allowed_by_five() { return allows_code({tables_[5].address(), 5}, page, 4096); }

    std::unique_ptr<Table[]> tables_{new Table[6]};
};

TEST_F(PageTablesTest, AWritablePageMayHoldCode) {
    EXPECT_TRUE(allowed());
    EXPECT_TRUE(allowed_by_five());
    EXPECT_TRUE(allowed(2 * 4096));
}

TEST_F(PageTablesTest, EveryPageCounts) {
    EXPECT_FALSE(allowed(3 * 4096));
    entry(1) = 0;
    EXPECT_FALSE(allowed(2 * 4096));
    EXPECT_FALSE(allowed(0));
}

TEST_F(PageTablesTest, EveryLevelCanForbidIt) {
    for (int level = 1; level <= 5; ++level) {
        const std::uint64_t kept = entry(level);
        entry(level) = kept | no_execute;
        EXPECT_FALSE(allowed_by_five()) << level;
        entry(level) = kept & ~writable;
        EXPECT_FALSE(allowed_by_five()) << level;
        entry(level) = kept & ~present;
        EXPECT_FALSE(allowed_by_five()) << level;
        entry(level) = kept;
        EXPECT_TRUE(allowed_by_five()) << level;
    }
}

TEST_F(PageTablesTest, FourLevelsDoNotLookAtTheFifth) {
    entry(5) = 0;
    EXPECT_TRUE(allowed());
    EXPECT_FALSE(allowed_by_five());
}

TEST_F(PageTablesTest, LargePagesEndTheWalk) {
    tables_[1] = {};
    entry(2) = large_page | usual | large;
    EXPECT_TRUE(allowed());
    entry(2) = large_page | usual | large | no_execute;
    EXPECT_FALSE(allowed());
    tables_[2] = {};
    entry(3) = huge_page | usual | large;
    EXPECT_TRUE(allowed());
    // The largest pages have no place two levels further up.
    tables_[3] = {};
    entry(4) = usual | large;
    EXPECT_FALSE(allowed());
}

// The bit that makes a page large tells something else about a small one.
TEST_F(PageTablesTest, ASmallPageIsNoLargeOne) {
    entry(1) |= large;
    EXPECT_TRUE(allowed());
}

TEST_F(PageTablesTest, AnotherPlaceIsNotThisMemory) {
    entry(1) = (page + 4096) | usual;
    EXPECT_FALSE(allowed());
    tables_[1] = {};
    entry(2) = (large_page + 0x200000) | usual | large;
    EXPECT_FALSE(allowed());
}

TEST_F(PageTablesTest, MarkedAddressesAreNotFollowed) {
    for (const int bit : {47, 51}) {
        const std::uint64_t kept = entry(3);
        entry(3) |= std::uint64_t{1} << bit;
        EXPECT_FALSE(allowed()) << bit;
        entry(3) = kept;
    }
    EXPECT_FALSE(allows_code({tables_[4].address(), 4}, page | std::uint64_t{1} << 47, 4096));
}

// Only what all levels give to the lowest privilege belongs to it.
TEST_F(PageTablesTest, PagesOfTheLowestPrivilegeMayBeRefused) {
    const Translation strict{tables_[4].address(), 4, true};
    for (int level = 1; level <= 4; ++level) {
        EXPECT_TRUE(allows_code(strict, page, 4096)) << level;
        entry(level) |= user;
    }
    EXPECT_FALSE(allows_code(strict, page, 4096));
    EXPECT_TRUE(allowed());
}

}  // namespace
}  // namespace korvane::native
