// Building and checking the firmware's file information records.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "folder.h"
#include "platform/uefi.h"

namespace korvane::host {

// Writes a file information record into a buffer of `*size` bytes; `*size` becomes the record's size. When
// that is larger than the buffer, nothing is written and the result is `buffer_too_small`. `name` is UTF-8.
uefi::Status put_file_information(const FileStatus& status, std::string_view name, std::uint64_t* size,
                                  void* buffer);

// What a caller wants a file to become.
struct WantedInformation {
    std::uint64_t file_size;
    std::uint64_t attributes;
    std::u16string name;
};

// Nothing when the record's sizes contradict each other or the name has no end.
std::optional<WantedInformation> take_file_information(std::uint64_t size, const void* buffer);

// The firmware's attributes of a file.
std::uint64_t attributes_of(const FileStatus& status);

}  // namespace korvane::host
