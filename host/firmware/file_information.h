// Building and checking the firmware's file information records.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "folder.h"
#include "platform/uefi.h"

namespace korvane::host {

// Writes an information record, whose name follows at an offset, into a buffer of `*size` bytes; `*size` and
// the record's own size become that of both. When that is larger than the buffer, nothing is written and the
// result is `buffer_too_small`.
template <typename Record>
uefi::Status put_named_record(Record record, std::uint64_t name_offset, const std::u16string& name,
                              std::uint64_t* size, void* buffer) {
    const std::uint64_t name_bytes = (name.size() + 1) * sizeof(char16_t);
    record.Size = name_offset + name_bytes;
    if (*size < record.Size) {
        *size = record.Size;
        return uefi::buffer_too_small;
    }
    if (buffer == nullptr) return uefi::invalid_parameter;
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    std::memcpy(bytes, &record, name_offset);
    std::memcpy(bytes + name_offset, name.c_str(), name_bytes);
    *size = record.Size;
    return uefi::success;
}

// The same for a file's; `name` is UTF-8.
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
