// The services of the file protocol: opening, reading, writing, positions, information, deletion.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "volume.h"

namespace korvane::host {

struct FileServices {
    // A file protocol whose members are the functions below.
    static uefi::FileProtocol table();

  private:
    static uefi::Status EFIAPI open(uefi::FileProtocol* self, uefi::FileProtocol** opened,
                                    const char16_t* name, std::uint64_t mode, std::uint64_t attributes);
    static uefi::Status EFIAPI close(uefi::FileProtocol* self);
    static uefi::Status EFIAPI remove(uefi::FileProtocol* self);
    static uefi::Status EFIAPI read(uefi::FileProtocol* self, std::uint64_t* size, void* buffer);
    static uefi::Status EFIAPI write(uefi::FileProtocol* self, std::uint64_t* size, const void* buffer);
    static uefi::Status EFIAPI get_position(uefi::FileProtocol* self, std::uint64_t* position);
    static uefi::Status EFIAPI set_position(uefi::FileProtocol* self, std::uint64_t position);
    static uefi::Status EFIAPI get_info(uefi::FileProtocol* self, const uefi::Guid* type, std::uint64_t* size,
                                        void* buffer);
    static uefi::Status EFIAPI set_info(uefi::FileProtocol* self, const uefi::Guid* type, std::uint64_t size,
                                        const void* buffer);
    static uefi::Status EFIAPI flush(uefi::FileProtocol* self);

    // Where a name leads from a handle: an entry that exists, or the place for a new one.
    struct Place {
        FolderPath path;
        bool exists;
    };

    static uefi::Status begin(uefi::FileProtocol* self, Service service, OpenFile*& file);
    static uefi::Status locate(const OpenFile& from, std::u16string_view name, Place& place);
    static uefi::Status open_lent(const OpenFile& from, std::u16string_view name, std::uint64_t mode,
                                  uefi::FileProtocol** opened);
    static uefi::Status open_existing(Volume& volume, const FolderPath& path, std::uint64_t mode,
                                      std::uint64_t attributes, bool creates, uefi::FileProtocol** opened);
    static void present_program(OpenFile& file);
    static void store_program(OpenFile& file);
    static uefi::Status write_bytes(OpenFile& file, std::uint64_t* size, const void* buffer);
    static uefi::Status read_entry(OpenFile& directory, std::uint64_t* size, void* buffer);
    static uefi::Status rename(OpenFile& file, std::u16string_view name);
    static uefi::Status change_size(OpenFile& file, std::uint64_t size);
    static uefi::Status file_system_information(const Volume& volume, std::uint64_t* size, void* buffer);
};

}  // namespace korvane::host
