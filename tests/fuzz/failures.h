// How the firmware fails under everything that uses it: what services answer, and what the volume lies about.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "machine.h"
#include "platform/uefi.h"
#include "volume.h"

namespace korvane::fuzz {

inline constexpr std::array failing_statuses = {
    uefi::device_error,     uefi::not_found,       uefi::out_of_resources, uefi::no_media,
    uefi::media_changed,    uefi::volume_full,     uefi::write_protected,  uefi::access_denied,
    uefi::buffer_too_small, uefi::volume_corrupted};

inline constexpr std::array lies = {Lie::half_read, Lie::empty_read, Lie::half_write,
                                    Lie::long_name, Lie::huge_size,  Lie::pulled_stick};

// A use beyond is like those before it: a long file is read in many pieces.
inline constexpr std::uint64_t most_uses = 40;

// So often that nobody sees the end of it.
inline constexpr std::uint64_t for_good = 1'000'000;

// How often a service has been used since the program began.
std::uint64_t uses_so_far(host::Service service);

// How often each service is used, from begin() to end().
class Uses {
  public:
    void begin();
    void end();
    std::uint64_t of(host::Service service) const { return counts_[static_cast<std::size_t>(service)]; }
    std::vector<host::Service> services() const;  // that are used at all
    // On a line of its own, behind what has used them.
    void print(const std::string& user) const;

  private:
    std::array<std::uint64_t, host::service_count> counts_{};
};

// How a service fails, in words.
std::string words_for(host::Service service, std::uint64_t use, bool once, uefi::Status status);
std::string words_for(Lie lie, std::uint64_t use);

}  // namespace korvane::fuzz
