// The handles of the firmware's database: addresses that stand for numbers.
#pragma once

#include <cstddef>

#include "platform/uefi.h"

namespace korvane::fuzz {

enum HandleNumber : std::size_t { console_handle, image_handle_number, volume_handle, first_disk_handle };

inline uefi::Handle handle_of(std::size_t number) {
    static char marks[64];
    return &marks[number];
}

}  // namespace korvane::fuzz
