#include "files/file_handle.h"

#include <algorithm>

#include "files/directory_record.h"
#include "platform/firmware.h"
#include "platform/memory.h"
#include "screen/framebuffer.h"

namespace korvane {

namespace {

// Firmware that reports less than this for a file information record reports nothing useful; a record of the
// second size holds a short name.
constexpr std::uint64_t least_info_size = 88;
constexpr std::uint64_t fallback_info_size = 344;
// A record with the longest name that any file system gives is far below this; more is not to be believed.
constexpr std::uint64_t greatest_info_size = 65536;

// The bytes of a file information record that the firmware asks for, or 0 when it asks for an absurd size.
std::uint64_t info_size(uefi::FileProtocol& file) {
    std::uint64_t size = 0;
    file.GetInfo(&file, &uefi::file_info_guid, &size, nullptr);
    if (size < least_info_size) return fallback_info_size;
    return size > greatest_info_size ? 0 : size;
}

// Fills a buffer of at least `size` bytes with the file information record.
bool read_info(uefi::FileProtocol& file, std::uint64_t size, PoolBuffer& buffer) {
    if (!buffer) return false;
    fill_bytes(buffer.data(), 0, buffer.size());
    return !uefi::is_error(file.GetInfo(&file, &uefi::file_info_guid, &size, buffer.data()));
}

}  // namespace

// A disk may take its time, and the buffer may be the screen itself: what was printed is shown first.

bool read_file(uefi::FileProtocol* file, void* buffer, std::uint64_t& size) {
    bring_up_to_date();
    const std::uint64_t wanted = size;
    const bool done = file != nullptr && !uefi::is_error(file->Read(file, &size, buffer));
    size = done ? std::min(size, wanted) : 0;
    return done;
}

bool write_file(uefi::FileProtocol* file, const void* buffer, std::uint64_t& size) {
    bring_up_to_date();
    const std::uint64_t wanted = size;
    const bool done = file != nullptr && !uefi::is_error(file->Write(file, &size, buffer));
    size = done ? std::min(size, wanted) : 0;
    return done;
}

bool set_file_position(uefi::FileProtocol* file, std::uint64_t position) {
    return file != nullptr && !uefi::is_error(file->SetPosition(file, position));
}

bool find_file_size(uefi::FileProtocol* file, std::uint64_t& size) {
    std::uint64_t position = 0;
    return file != nullptr && !uefi::is_error(file->GetPosition(file, &position)) &&
           set_file_position(file, uefi::end_of_file_position) &&
           !uefi::is_error(file->GetPosition(file, &size)) && set_file_position(file, position);
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    if (this != &other) {
        close();
        protocol_ = other.release();
    }
    return *this;
}

uefi::FileProtocol* FileHandle::release() {
    uefi::FileProtocol* protocol = protocol_;
    protocol_ = nullptr;
    return protocol;
}

void FileHandle::close() {
    uefi::FileProtocol* protocol = release();
    if (protocol == nullptr) return;
    bring_up_to_date();
    protocol->Close(protocol);
}

bool FileHandle::read_exactly(void* buffer, std::uint64_t size) const {
    std::uint64_t done = size;
    return read(buffer, done) && done == size;
}

bool FileHandle::write_exactly(const void* buffer, std::uint64_t size) const {
    std::uint64_t done = size;
    return write(buffer, done) && done == size;
}

bool FileHandle::remove() {
    uefi::FileProtocol* protocol = release();
    return protocol != nullptr && protocol->Delete(protocol) == uefi::success;
}

FileHandle open_below(uefi::FileProtocol* directory, const char16_t* name, std::uint64_t firmware_mode,
                      std::uint64_t attributes) {
    if (directory == nullptr || name[0] == 0) return FileHandle();
    bring_up_to_date();
    uefi::FileProtocol* opened = nullptr;
    if (uefi::is_error(directory->Open(directory, &opened, name, firmware_mode, attributes)))
        return FileHandle();
    return FileHandle(opened);
}

std::optional<std::uint64_t> file_attributes(uefi::FileProtocol* file) {
    if (file == nullptr) return std::nullopt;
    const std::uint64_t size = info_size(*file);
    if (size == 0) return std::nullopt;
    PoolBuffer buffer(size);
    if (!read_info(*file, size, buffer)) return std::nullopt;
    return DirectoryRecord({buffer.data(), size}).attributes();
}

bool IsDirectory(uefi::FileProtocol* file) {
    return (file_attributes(file).value_or(0) & uefi::file_directory) != 0;
}

bool set_file_name(uefi::FileProtocol& file, const FirmwareName& name) {
    const std::uint64_t size = info_size(file);
    if (size == 0) return false;
    PoolBuffer buffer(size + 18 + 2 * std::uint64_t{name.length});
    if (!read_info(file, size, buffer)) return false;

    const std::uint64_t name_bytes = 2 * (std::uint64_t{name.length} + 1);
    copy_bytes(buffer.data() + uefi::file_info_name_offset, name.text, name_bytes);
    const std::uint64_t new_size = uefi::file_info_name_offset + name_bytes;
    write_unaligned<std::uint64_t>(buffer.data(), new_size);
    return file.SetInfo(&file, &uefi::file_info_guid, new_size, buffer.data()) == uefi::success;
}

}  // namespace korvane
