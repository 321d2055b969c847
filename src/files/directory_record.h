// What the firmware tells of an entry of a directory, and texts at the end of its records.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/memory.h"
#include "platform/uefi.h"

namespace korvane {

// Calls put(unit) for each character of a UTF-16 text, at most `limit`. The text may lack its terminating
// zero: it ends with its record at the latest.
template <typename Put>
void for_each_unit(std::span<const std::uint8_t> text, std::size_t limit, Put put) {
    for (std::size_t i = 0; i + 1 < text.size() && i / 2 < limit; i += 2) {
        const auto unit = read_unaligned<char16_t>(text.data() + i);
        if (unit == 0) return;
        put(unit);
    }
}

// A uefi::FileInfo as the firmware filled it, at any address.
class DirectoryRecord {
  public:
    explicit DirectoryRecord(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    // False: there is less than what stands before a name; nothing but the name, which is empty, may be read.
    bool is_whole() const { return bytes_.size() >= uefi::file_info_name_offset; }

    std::uint64_t size() const { return field<std::uint64_t>(offsetof(uefi::FileInfo, FileSize)); }
    uefi::Time changed() const { return field<uefi::Time>(offsetof(uefi::FileInfo, ModificationTime)); }
    std::uint64_t attributes() const { return field<std::uint64_t>(offsetof(uefi::FileInfo, Attribute)); }
    bool is_directory() const { return (attributes() & uefi::file_directory) != 0; }

    // For for_each_unit().
    std::span<const std::uint8_t> name() const {
        return bytes_.subspan(std::min<std::size_t>(bytes_.size(), uefi::file_info_name_offset));
    }

  private:
    template <typename Field>
    Field field(std::size_t offset) const {
        return read_unaligned<Field>(bytes_.data() + offset);
    }

    std::span<const std::uint8_t> bytes_;
};

}  // namespace korvane
