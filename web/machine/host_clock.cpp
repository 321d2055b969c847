// The browser's clocks.
#include "host_clock.h"

#include "imports.h"

namespace korvane::host {

namespace {

struct Date {
    std::int64_t year;
    std::int64_t month;  // 1 to 12
    std::int64_t day;    // 1 to 31
};

// The date of a day counted from the first of 1970. Years begin in March here, so that a leap day is the last
// of its year; 400 of them make an era of 146,097 days.
Date date_of(std::int64_t days) {
    constexpr std::int64_t days_of_era = 146'097;
    constexpr std::int64_t days_before_1970 = 719'468;
    const std::int64_t all = days + days_before_1970;
    const std::int64_t era = (all >= 0 ? all : all - (days_of_era - 1)) / days_of_era;
    const std::int64_t day = all - era * days_of_era;
    const std::int64_t year = (day - day / 1460 + day / 36'524 - day / 146'096) / 365;
    const std::int64_t day_of_year = day - (365 * year + year / 4 - year / 100);
    const std::int64_t march_month = (5 * day_of_year + 2) / 153;
    const std::int64_t month = march_month < 10 ? march_month + 3 : march_month - 9;
    return {year + era * 400 + (month <= 2 ? 1 : 0), month, day_of_year - (153 * march_month + 2) / 5 + 1};
}

}  // namespace

HostTime host_time_now() {
    const auto milliseconds = static_cast<std::int64_t>(web::import_now());
    return {milliseconds / 1000, static_cast<std::uint32_t>(milliseconds % 1000 * 1'000'000)};
}

uefi::Time to_firmware_time(HostTime when) {
    constexpr std::int64_t seconds_of_day = 86'400;
    const auto ahead = static_cast<std::int64_t>(
        web::import_minutes_ahead(static_cast<double>(when.seconds) * 1000.0) * 60.0);
    const std::int64_t local = when.seconds + ahead;
    const std::int64_t days = (local >= 0 ? local : local - (seconds_of_day - 1)) / seconds_of_day;
    const std::int64_t second = local - days * seconds_of_day;
    const Date date = date_of(days);
    uefi::Time time{};
    time.Year = static_cast<std::uint16_t>(date.year);
    time.Month = static_cast<std::uint8_t>(date.month);
    time.Day = static_cast<std::uint8_t>(date.day);
    time.Hour = static_cast<std::uint8_t>(second / 3600);
    time.Minute = static_cast<std::uint8_t>(second / 60 % 60);
    time.Second = static_cast<std::uint8_t>(second % 60);
    time.Nanosecond = when.nanoseconds;
    time.TimeZone = 0x7FF;
    return time;
}

void host_stall(std::uint64_t microseconds) {
    web::import_stall(static_cast<double>(microseconds));
}

}  // namespace korvane::host
