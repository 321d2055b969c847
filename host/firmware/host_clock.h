// The host's clocks, as the firmware shows them to the image.
#pragma once

#include <cstdint>

#include "platform/uefi.h"

namespace korvane::host {

// A moment, in seconds since the beginning of 1970, UTC.
struct HostTime {
    std::int64_t seconds;
    std::uint32_t nanoseconds;
};

HostTime host_time_now();

// As the firmware's calendar record: in local time, with the time zone left unspecified.
uefi::Time to_firmware_time(HostTime time);

// Waits.
void host_stall(std::uint64_t microseconds);

// A count that goes on at an even pace, of billions in a second: by it, looks for a key with hardly any time
// in between are told from others.
std::uint64_t host_ticks();

}  // namespace korvane::host
