// Host times as the firmware's calendar records.
#pragma once

#include <ctime>

#include "platform/uefi.h"

namespace korvane::host {

// In local time, with the time zone left unspecified.
uefi::Time to_firmware_time(std::time_t seconds, std::uint32_t nanoseconds);

// The host's clock now.
uefi::Time current_firmware_time();

}  // namespace korvane::host
