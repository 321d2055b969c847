#include <gtest/gtest.h>

#include <vector>

#include "explorer/memory/byte_search.h"

namespace korvane {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ByteSearch, FindsTheFirstByteAtEveryPlaceOfEveryLength) {
    for (std::size_t length = 0; length <= 200; ++length) {
        Bytes bytes(length, 0x55);
        EXPECT_EQ(find_byte(bytes.data(), length, 0xAA), length);
        for (std::size_t place = 0; place < length; ++place) {
            bytes[place] = 0xAA;
            ASSERT_EQ(find_byte(bytes.data(), length, 0xAA), place) << "of " << length;
            bytes[place] = 0x55;
        }
    }
}

TEST(ByteSearch, FindsTheFirstDifferenceAtEveryPlaceOfEveryLength) {
    for (std::size_t length = 0; length <= 200; ++length) {
        Bytes left(length);
        for (std::size_t i = 0; i < length; ++i)
            left[i] = static_cast<std::uint8_t>(i * 37 % 251);
        Bytes right = left;
        EXPECT_EQ(find_difference(left.data(), right.data(), length), length);
        for (std::size_t place = 0; place < length; ++place) {
            right[place] ^= 1;
            ASSERT_EQ(find_difference(left.data(), right.data(), length), place) << "of " << length;
            right[place] ^= 1;
        }
    }
}

// All matches, then -1 when the hunt ended for an unreadable byte.
std::vector<std::int64_t> hunt(const Bytes& memory, std::size_t readable, const Bytes& pattern) {
    PatternHunt search(memory.data(), readable, memory.size() - pattern.size(), pattern);
    std::vector<std::int64_t> found;
    std::uint64_t offset = 0;
    for (;;) {
        switch (search.next(offset)) {
            case HuntResult::match:
                found.push_back(static_cast<std::int64_t>(offset));
                break;
            case HuntResult::exhausted:
                return found;
            case HuntResult::unavailable:
                found.push_back(-1);
                return found;
        }
    }
}

using Found = std::vector<std::int64_t>;

TEST(PatternHunt, FindsOverlappingMatches) {
    EXPECT_EQ(hunt({0xAA, 0xAA, 0xAA, 0xAA}, 4, {0xAA, 0xAA}), (Found{0, 1, 2}));
}

TEST(PatternHunt, TriesEveryStartUpToTheLastThatFits) {
    EXPECT_EQ(hunt({1, 2, 3, 1, 2}, 5, {1, 2}), (Found{0, 3}));
    EXPECT_EQ(hunt({1, 2, 3}, 3, {1, 2, 3}), (Found{0}));
    EXPECT_EQ(hunt({1, 2, 3, 1}, 4, {1, 2}), (Found{0}));
    EXPECT_EQ(hunt({9, 9}, 2, {1}), Found{});
}

TEST(PatternHunt, EndsAtTheFirstComparedByteThatCannotBeRead) {
    // The start at offset 2 is unreadable itself.
    EXPECT_EQ(hunt({1, 1, 1, 1}, 2, {1}), (Found{0, 1, -1}));
    // A partial match runs into it.
    EXPECT_EQ(hunt({7, 1, 2, 3}, 3, {1, 2, 3}), (Found{-1}));
    // A mismatch before it decides without it, but then the next start is unreadable.
    EXPECT_EQ(hunt({7, 1, 9, 3, 4, 5}, 3, {1, 2, 3}), (Found{-1}));
    EXPECT_EQ(hunt({7, 1, 9, 3}, 3, {1, 2, 3}), Found{});
    EXPECT_EQ(hunt({1, 1}, 0, {1}), (Found{-1}));
}

}  // namespace
}  // namespace korvane
