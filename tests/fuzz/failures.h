// How the firmware fails under everything that uses it: what services answer, and what the volume lies about.
#pragma once

#include <array>
#include <cstdint>

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

}  // namespace korvane::fuzz
