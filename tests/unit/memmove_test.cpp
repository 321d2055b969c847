// The memmove of the tests: with AddressSanitizer it is ours (runner/quick_memmove.cpp).
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

namespace korvane {
namespace {

using Bytes = std::vector<unsigned char>;

// What moving bytes within a block comes to.
Bytes moved(const Bytes& block, std::size_t to, std::size_t from, std::size_t size) {
    Bytes result = block;
    for (std::size_t i = 0; i < size; ++i)
        result[to + i] = block[from + i];
    return result;
}

TEST(Memmove, OverlapsOfAllKindsAreMoved) {
    Bytes block(5000);
    std::iota(block.begin(), block.end(), static_cast<unsigned char>(0));
    for (std::size_t i = 0; i < block.size(); i += 251)
        block[i] = static_cast<unsigned char>(i / 251);
    const std::vector<std::size_t> places = {0, 1, 255, 256, 257, 512, 1000, 2499, 2500};
    for (const std::size_t to : places) {
        for (const std::size_t from : places) {
            for (const std::size_t size : {0u, 1u, 255u, 256u, 257u, 511u, 513u, 1024u, 2500u}) {
                Bytes result = block;
                void* const target = result.data() + to;
                ASSERT_EQ(std::memmove(target, result.data() + from, size), target);
                ASSERT_EQ(result, moved(block, to, from, size))
                    << size << " bytes from " << from << " to " << to;
            }
        }
    }
}

#ifdef __SANITIZE_ADDRESS__
TEST(Memmove, WhatLeavesABlockIsFound) {
    for (const std::size_t distance : {16u, 300u}) {
        const auto overrun = [distance](std::size_t to, std::size_t from) {
            const auto block = std::make_unique<unsigned char[]>(1000);
            std::memmove(block.get() + to, block.get() + from, 1001 - distance);
        };
        EXPECT_DEATH(overrun(0, distance), "heap-buffer-overflow");
        EXPECT_DEATH(overrun(distance, 0), "heap-buffer-overflow");
    }
}
#endif

}  // namespace
}  // namespace korvane
