#include "host_clock.h"

#include <cerrno>
#include <ctime>

namespace korvane::host {

HostTime host_time_now() {
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return {now.tv_sec, static_cast<std::uint32_t>(now.tv_nsec)};
}

uefi::Time to_firmware_time(HostTime when) {
    const std::time_t seconds = when.seconds;
    std::tm local{};
    localtime_r(&seconds, &local);
    uefi::Time time{};
    time.Year = static_cast<std::uint16_t>(local.tm_year + 1900);
    time.Month = static_cast<std::uint8_t>(local.tm_mon + 1);
    time.Day = static_cast<std::uint8_t>(local.tm_mday);
    time.Hour = static_cast<std::uint8_t>(local.tm_hour);
    time.Minute = static_cast<std::uint8_t>(local.tm_min);
    // A leap second has no place in the record.
    time.Second = static_cast<std::uint8_t>(local.tm_sec > 59 ? 59 : local.tm_sec);
    time.Nanosecond = when.nanoseconds;
    time.TimeZone = 0x7FF;
    return time;
}

void host_stall(std::uint64_t microseconds) {
    std::timespec left{static_cast<std::time_t>(microseconds / 1'000'000),
                       static_cast<long>(microseconds % 1'000'000 * 1000)};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

std::uint64_t host_ticks() {
    return __builtin_ia32_rdtsc();
}

}  // namespace korvane::host
