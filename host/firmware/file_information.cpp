#include "file_information.h"

#include <cstddef>
#include <cstring>

#include "unicode.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t cluster_size = 4096;

}  // namespace

std::uint64_t attributes_of(const FileStatus& status) {
    if (status.is_directory) return uefi::file_directory;
    return (status.is_read_only ? uefi::file_read_only : 0) | uefi::file_archive;
}

uefi::Status put_file_information(const FileStatus& status, std::string_view name, std::uint64_t* size,
                                  void* buffer) {
    uefi::FileInfo information{};
    information.FileSize = status.is_directory ? 0 : status.size;
    information.PhysicalSize = (information.FileSize + cluster_size - 1) / cluster_size * cluster_size;
    information.CreateTime = to_firmware_time(status.modified);
    information.LastAccessTime = to_firmware_time(status.accessed);
    information.ModificationTime = to_firmware_time(status.modified);
    information.Attribute = attributes_of(status);
    return put_named_record(information, uefi::file_info_name_offset, to_utf16(name).value_or(u""), size,
                            buffer);
}

std::optional<WantedInformation> take_file_information(std::uint64_t size, const void* buffer) {
    constexpr std::uint64_t least = uefi::file_info_name_offset + sizeof(char16_t);
    if (size < least || buffer == nullptr) return std::nullopt;
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    std::uint64_t record_size = 0;
    WantedInformation wanted{};
    std::memcpy(&record_size, bytes, sizeof record_size);
    std::memcpy(&wanted.file_size, bytes + offsetof(uefi::FileInfo, FileSize), sizeof wanted.file_size);
    std::memcpy(&wanted.attributes, bytes + offsetof(uefi::FileInfo, Attribute), sizeof wanted.attributes);
    if (record_size < least || record_size > size) return std::nullopt;
    for (std::uint64_t at = uefi::file_info_name_offset; at + sizeof(char16_t) <= record_size;
         at += sizeof(char16_t)) {
        char16_t unit = 0;
        std::memcpy(&unit, bytes + at, sizeof unit);
        if (unit == 0) return wanted;
        wanted.name += unit;
    }
    return std::nullopt;
}

}  // namespace korvane::host
