#include "platform/clock.h"

#include "platform/firmware.h"

namespace korvane {

Clock tsc_clock;

void calibrate_clock() {
    constexpr std::uint64_t stall_microseconds = 100'000;
    constexpr std::uint64_t stalls_per_second = 10;
    const std::uint64_t before = read_time_stamp();
    // A stall that fails returns at once and makes the rate too small;
    // there is no better clock to check it with.
    firmware.boot->Stall(stall_microseconds);
    tsc_clock.ticks_per_second = (read_time_stamp() - before) * stalls_per_second;
}

uefi::Time read_calendar() {
    uefi::Time time{};
    if (uefi::is_error(firmware.runtime->GetTime(&time, nullptr))) return uefi::Time{};
    return time;
}

double clock_seconds() {
    if (tsc_clock.ticks_per_second != 0)
        return static_cast<double>(read_time_stamp()) / static_cast<double>(tsc_clock.ticks_per_second);
    const uefi::Time time = read_calendar();
    return time.Hour * 3600.0 + time.Minute * 60.0 + time.Second + time.Nanosecond / 1e9;
}

std::uint64_t clock_milliseconds() {
    const std::uint64_t rate = tsc_clock.ticks_per_second;
    if (rate == 0) return static_cast<std::uint64_t>(clock_seconds() * 1000.0);
    const std::uint64_t ticks = read_time_stamp();
    // Whole seconds apart, so that the product cannot wrap.
    return ticks / rate * 1000 + ticks % rate * 1000 / rate;
}

std::uint64_t time_stamp_at(std::uint64_t milliseconds) {
    const std::uint64_t rate = tsc_clock.ticks_per_second;
    const std::uint64_t seconds = milliseconds / 1000;
    if (rate != 0 && seconds >= ~std::uint64_t{0} / rate) return ~std::uint64_t{0};
    return seconds * rate + (milliseconds % 1000 * rate + 999) / 1000;
}

}  // namespace korvane
