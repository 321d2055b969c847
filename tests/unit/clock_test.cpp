#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace korvane {
namespace {

// What clock_milliseconds() gives when the counter stands at `ticks`.
std::uint64_t milliseconds_at(std::uint64_t ticks, std::uint64_t rate) {
    using Wide = unsigned __int128;
    return static_cast<std::uint64_t>(Wide{ticks} * 1000 / rate);
}

class ClockTest : public testing::Test {
  protected:
    void TearDown() override { tsc_clock = {}; }
};

TEST_F(ClockTest, TheStampOfAMillisecondIsTheFirstOneInIt) {
    const std::vector<std::uint64_t> rates = {
        1, 7, 999, 1000, 1001, 2'400'000'000, 2'893'200'123, 1'000'000'000'000};
    const std::vector<std::uint64_t> times = {0,    1,    2,          499,           999,
                                              1000, 1001, 86'400'000, 4'294'967'296, 123'456'789'012};
    for (const std::uint64_t rate : rates) {
        tsc_clock.ticks_per_second = rate;
        for (const std::uint64_t time : times) {
            const std::uint64_t stamp = time_stamp_at(time);
            if (stamp == ~std::uint64_t{0}) continue;
            EXPECT_GE(milliseconds_at(stamp, rate), time) << rate;
            const bool is_first = stamp == 0 || milliseconds_at(stamp - 1, rate) < time;
            EXPECT_TRUE(is_first) << rate;
        }
    }
}

TEST_F(ClockTest, AMillisecondBeyondTheCounterNeverComes) {
    tsc_clock.ticks_per_second = 3'000'000'000;
    // 2^64 ticks are 6148914691 seconds at this rate.
    EXPECT_LT(time_stamp_at(6'148'914'690'000), ~std::uint64_t{0});
    EXPECT_EQ(time_stamp_at(6'148'914'692'000), ~std::uint64_t{0});
    EXPECT_EQ(time_stamp_at(~std::uint64_t{0}), ~std::uint64_t{0});
}

TEST_F(ClockTest, ACounterThatStandsStillIsAlwaysLookedAt) {
    tsc_clock.ticks_per_second = 0;
    EXPECT_EQ(time_stamp_at(0), 0u);
    EXPECT_EQ(time_stamp_at(123'456'789), 0u);
}

}  // namespace
}  // namespace korvane
