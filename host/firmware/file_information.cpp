#include "file_information.h"

#include <cstddef>
#include <cstring>

#include "calendar.h"
#include "unicode.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t cluster_size = 4096;

uefi::Time to_time(const std::timespec& time) {
    return to_firmware_time(time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec));
}

}  // namespace

std::uint64_t attributes_of(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) return uefi::file_directory;
    const std::uint64_t read_only = (status.st_mode & S_IWUSR) == 0 ? uefi::file_read_only : 0;
    return read_only | uefi::file_archive;
}

uefi::Status put_file_information(const struct stat& status, std::string_view name, std::uint64_t* size,
                                  void* buffer) {
    const std::u16string wide_name = to_utf16(name).value_or(u"");
    const std::uint64_t name_bytes = (wide_name.size() + 1) * sizeof(char16_t);
    const std::uint64_t needed = uefi::file_info_name_offset + name_bytes;
    if (*size < needed) {
        *size = needed;
        return uefi::buffer_too_small;
    }
    if (buffer == nullptr) return uefi::invalid_parameter;
    uefi::FileInfo information{};
    information.Size = needed;
    information.FileSize = S_ISDIR(status.st_mode) ? 0 : static_cast<std::uint64_t>(status.st_size);
    information.PhysicalSize = (information.FileSize + cluster_size - 1) / cluster_size * cluster_size;
    information.CreateTime = to_time(status.st_mtim);
    information.LastAccessTime = to_time(status.st_atim);
    information.ModificationTime = to_time(status.st_mtim);
    information.Attribute = attributes_of(status);
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    std::memcpy(bytes, &information, uefi::file_info_name_offset);
    std::memcpy(bytes + uefi::file_info_name_offset, wide_name.c_str(), name_bytes);
    *size = needed;
    return uefi::success;
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
