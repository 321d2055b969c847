#include "files/named_files.h"

#include "files/own_image.h"
#include "files/volume.h"

namespace korvane {

namespace {

constexpr std::uint64_t read_write = uefi::file_mode_read | uefi::file_mode_write;
constexpr std::uint64_t create_read_write = uefi::file_mode_create | read_write;

constexpr std::uint32_t max_new_name = 254;  // characters, when renaming

// Some firmware opens a directory where a file is to be created, and lets it be deleted if it is empty.
FileHandle open_for_writing(const FirmwareName& name) {
    FileHandle file = open_named(name, create_read_write);
    if (IsDirectory(file.get())) file.close();
    return file;
}

FileHandle create_empty(const FirmwareName& name) {
    FileHandle old = open_for_writing(name);
    if (!old || is_own_image(old.get(), name) || !old.remove()) return FileHandle();
    return open_named(name, create_read_write);
}

FileHandle open_at_end(const FirmwareName& name) {
    FileHandle file = open_for_writing(name);
    if (!file.set_position(uefi::end_of_file_position)) file.close();
    return file;
}

}  // namespace

FileHandle OpenFileByName(std::string_view name, OpenMode mode) {
    const FirmwareName converted(name);
    switch (mode) {
        case OpenMode::read:
            return open_named(converted, uefi::file_mode_read);
        case OpenMode::create:
            return create_empty(converted);
        case OpenMode::append:
            return open_at_end(converted);
        case OpenMode::update:
            return open_for_writing(converted);
    }
    return FileHandle();
}

bool DeleteFileByName(std::string_view name) {
    return open_named(FirmwareName(name), read_write).remove();
}

bool RenameFileByName(std::string_view old_name, std::string_view new_name) {
    new_name = up_to_zero(new_name);
    if (new_name.empty()) return false;
    const FileHandle file = open_named(FirmwareName(old_name), read_write);
    if (!file || new_name.size() > max_new_name) return false;
    return set_file_name(*file.get(), FirmwareName(new_name));
}

}  // namespace korvane
