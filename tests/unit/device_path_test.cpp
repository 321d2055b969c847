// Device paths as they lie in memory, up to the longest that is looked at.
#include "platform/device_path.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace korvane {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t longest = 4096;

void add_node(Bytes& path, std::size_t length) {
    path.insert(path.end(),
                {1, 2, static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(length >> 8)});
    path.resize(path.size() + length - 4);
}

// A path of nodes of `length` bytes that comes to `total`, by a shorter last one; without an end.
Bytes path_without_end(std::size_t length, std::size_t total) {
    Bytes path;
    while (total - path.size() >= 2 * length)
        add_node(path, length);
    add_node(path, total - path.size());
    return path;
}

std::size_t size_of(Bytes path) {
    // What lies behind looks like more nodes.
    while (path.size() < 3 * longest)
        add_node(path, 8);
    return whole_device_path(path.data()).size();
}

TEST(DevicePath, EndsWithItsEndNode) {
    Bytes path = path_without_end(12, 100);
    path.insert(path.end(), {0x7F, 0xFF, 4, 0});
    EXPECT_EQ(size_of(path), 104u);
    EXPECT_EQ(size_of({0x7F, 0xFF, 4, 0}), 4u);
    EXPECT_EQ(whole_device_path(nullptr).size(), 0u);
}

TEST(DevicePath, NodesUpTo4096BytesAreLookedAt) {
    EXPECT_EQ(size_of(path_without_end(16, longest)), longest);
    EXPECT_EQ(size_of(path_without_end(longest, longest)), longest);
    // The last node goes one byte too far.
    Bytes path = path_without_end(16, longest - 16);
    add_node(path, 17);
    EXPECT_EQ(size_of(path), longest - 16);
    path.clear();
    add_node(path, longest + 1);
    EXPECT_EQ(size_of(path), 0u);
}

TEST(DevicePath, AnEndBehind4096BytesBelongsToThePathNoMore) {
    Bytes path = path_without_end(16, longest - 4);
    path.insert(path.end(), {0x7F, 0xFF, 4, 0});
    EXPECT_EQ(size_of(path), longest);
    path = path_without_end(16, longest);
    path.insert(path.end(), {0x7F, 0xFF, 4, 0});
    EXPECT_EQ(size_of(path), longest);
}

TEST(DevicePath, ANodeShorterThanItsHeaderEndsThePath) {
    for (const std::uint8_t length : {std::uint8_t{0}, std::uint8_t{3}}) {
        Bytes path = path_without_end(16, 64);
        path.insert(path.end(), {1, 2, length, 0});
        EXPECT_EQ(size_of(path), 64u);
    }
}

}  // namespace
}  // namespace korvane
