// Standard output that does not lose anything unnoticed.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace korvane::host {

// Gathers text and writes it on. Where it cannot be written (the device is full, the reader has gone) the
// process ends with a status of its own and, unless it is only the reader that has gone, a message.
class StandardOutput {
  public:
    ~StandardOutput() { flush(); }

    void put(std::string_view text);

    // Writes what is gathered.
    void flush();

    // The same when the oldest of it has waited for a moment: output of a program that runs is
    // seen while it runs.
    void flush_if_due();

  private:
    std::string gathered_;
    std::chrono::steady_clock::time_point since_;  // something is gathered
};

// How long a machine may run before flush_if_due() is called again, in microseconds.
constexpr std::uint64_t output_glance_time_us = 20'000;

// Exit status when standard output cannot be written.
constexpr int output_failed_status = 74;

}  // namespace korvane::host
