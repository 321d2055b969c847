// Time: the processor's time-stamp counter, calibrated once at start-up, and the firmware's calendar clock.
#pragma once

#include <cstdint>

#include "platform/processor.h"
#include "platform/uefi.h"

namespace korvane {

struct Clock {
    std::uint64_t ticks_per_second;  // of the time-stamp counter; 0 when the calibration saw it stand still
};
extern Clock tsc_clock;

// Reads the counter around a firmware stall of 100 ms.
void calibrate_clock();

// The counter itself; it counts from the processor's reset.
inline std::uint64_t read_time_stamp() {
    return processor_ticks();
}

// Seconds since the processor's reset; the seconds of the day when the counter has no rate.
double clock_seconds();

// The same as whole milliseconds, the time base of the event timers.
std::uint64_t clock_milliseconds();

// What the counter holds when clock_milliseconds() gets that far; 0 when the counter has no rate, and the
// highest number when it will never.
std::uint64_t time_stamp_at(std::uint64_t milliseconds);

// The firmware's calendar clock; all zero when it cannot be read.
uefi::Time read_calendar();

}  // namespace korvane
