#include "calendar.h"

namespace korvane::host {

uefi::Time to_firmware_time(std::time_t seconds, std::uint32_t nanoseconds) {
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
    time.Nanosecond = nanoseconds;
    time.TimeZone = 0x7FF;
    return time;
}

uefi::Time current_firmware_time() {
    std::timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return to_firmware_time(now.tv_sec, static_cast<std::uint32_t>(now.tv_nsec));
}

}  // namespace korvane::host
