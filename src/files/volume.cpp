#include "files/volume.h"

#include <algorithm>

#include "files/boot_volume.h"
#include "files/own_image.h"
#include "platform/firmware.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"
#include "values/evaluator.h"

namespace korvane {

Volume volume;

namespace {

constexpr std::uint64_t read_write = uefi::file_mode_read | uefi::file_mode_write;
constexpr std::uint64_t create_read_write = uefi::file_mode_create | read_write;

// Firmware that reports less than this for a file information record reports nothing useful; a record of the
// second size holds a short name.
constexpr std::uint64_t least_info_size = 88;
constexpr std::uint64_t fallback_info_size = 344;
// A record with the longest name that any file system gives is far below this; more is not to be believed.
constexpr std::uint64_t greatest_info_size = 65536;

constexpr std::uint64_t attribute_offset = __builtin_offsetof(uefi::FileInfo, Attribute);

constexpr std::uint32_t max_new_name = 254;  // characters, when renaming

char16_t to_firmware_unit(char byte) {
    // Names outside ASCII are widened with their sign, which no file system gives a meaning: deliberate.
    return byte == '/' ? u'\\'
                       : static_cast<char16_t>(static_cast<std::int16_t>(static_cast<signed char>(byte)));
}

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

std::string_view up_to_zero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

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

// A name from the root, whose "." and ".." have been worked off.
class RootedName {
  public:
    // `name` as it is meant in the directory `base`.
    RootedName(const char16_t* base, const char16_t* name) {
        if (name[0] != u'\\') follow(base);
        follow(name);
        if (length_ == 0) text_[length_++] = u'\\';
        text_[length_] = 0;
    }

    const char16_t* text() const { return text_; }
    std::uint32_t length() const { return length_; }

  private:
    void follow(const char16_t* name) {
        while (*name != 0) {
            if (*name == u'\\') {
                ++name;
                continue;
            }
            const char16_t* end = name;
            while (*end != 0 && *end != u'\\')
                ++end;
            follow_part(std::u16string_view(name, static_cast<std::size_t>(end - name)));
            name = end;
        }
    }

    void follow_part(std::u16string_view part) {
        if (part == u".") return;
        if (part == u"..") {
            while (length_ != 0 && text_[--length_] != u'\\') {
            }
            return;
        }
        text_[length_++] = u'\\';
        for (const char16_t unit : part)
            text_[length_++] = unit;
    }

    // Room for a path that is kept, a separator and a name that was converted, and for the lone separator.
    char16_t text_[Volume::max_path + FirmwareName::max_length + 3];
    std::uint32_t length_ = 0;
};

bool knows_current_path() {
    return volume.current_path[0] == u'\\';
}

// Looks for the volume anew when its root has gone. True when it was found. The old root is given up, not
// closed: it belongs to a medium that is no longer there. A second look makes sure of that: firmware may have
// failed only once.
bool renew_root() {
    if (volume.root == nullptr || IsDirectory(volume.root)) return false;
    FileHandle found = find_boot_volume();
    if (!found || IsDirectory(volume.root)) return false;
    volume.root = found.release();
    return true;
}

// Looks for the current directory anew when it has gone. True when it had, whether it was found or not.
bool renew_current_directory() {
    if (volume.current_path[0] == 0 || IsDirectory(volume.current_directory)) return false;
    FileHandle(volume.current_directory).close();
    FileHandle found;
    if (knows_current_path()) found = open_from_root(volume.current_path, uefi::file_mode_read);
    if (!IsDirectory(found.get())) found.close();
    volume.current_directory = found.release();
    return true;
}

}  // namespace

bool read_file(uefi::FileProtocol* file, void* buffer, std::uint64_t& size) {
    const std::uint64_t wanted = size;
    const bool done = file != nullptr && !uefi::is_error(file->Read(file, &size, buffer));
    size = done ? std::min(size, wanted) : 0;
    return done;
}

bool write_file(uefi::FileProtocol* file, const void* buffer, std::uint64_t& size) {
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
    if (uefi::FileProtocol* protocol = release()) protocol->Close(protocol);
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

FirmwareName::FirmwareName(std::string_view name) : text{}, length(0) {
    for (const char byte : up_to_zero(name).substr(0, max_length))
        text[length++] = to_firmware_unit(byte);
}

void initialize_volume() {
    volume = Volume{};
    forget_boot_volume();
}

uefi::FileProtocol* GetVolumeRoot() {
    if (volume.root == nullptr) volume.root = open_boot_volume().release();
    return volume.root;
}

uefi::FileProtocol* base_directory() {
    return volume.current_path[0] != 0 ? volume.current_directory : GetVolumeRoot();
}

uefi::FileProtocol* live_base_directory() {
    if (!IsDirectory(base_directory())) {
        renew_root();
        renew_current_directory();
    }
    return base_directory();
}

void set_current_directory(FileHandle directory, const FirmwareName& name) {
    const FileHandle previous(volume.current_directory);
    volume.current_directory = directory.release();
    const bool is_rooted = name.text[0] == u'\\' || volume.current_path[0] == 0 || knows_current_path();
    const RootedName path(volume.current_path, name.text);
    if (is_rooted && path.length() <= Volume::max_path) {
        copy_bytes(volume.current_path, path.text(), (path.length() + 1) * sizeof(char16_t));
    } else {
        volume.current_path[0] = u'?';
    }
}

FileHandle open_below(uefi::FileProtocol* directory, const char16_t* name, std::uint64_t firmware_mode,
                      std::uint64_t attributes) {
    if (directory == nullptr || name[0] == 0) return FileHandle();
    uefi::FileProtocol* opened = nullptr;
    if (uefi::is_error(directory->Open(directory, &opened, name, firmware_mode, attributes)))
        return FileHandle();
    return FileHandle(opened);
}

FileHandle open_from_root(const char16_t* name, std::uint64_t firmware_mode, std::uint64_t attributes) {
    FileHandle opened = open_below(GetVolumeRoot(), name, firmware_mode, attributes);
    if (opened || !renew_root()) return opened;
    return open_below(GetVolumeRoot(), name, firmware_mode, attributes);
}

FileHandle open_named(const FirmwareName& name, std::uint64_t firmware_mode, std::uint64_t attributes) {
    if (name.text[0] == u'\\') return open_from_root(name.text, firmware_mode, attributes);
    FileHandle opened = open_below(base_directory(), name.text, firmware_mode, attributes);
    if (opened || name.empty()) return opened;
    const bool has_root = renew_root();
    if (!renew_current_directory() && !has_root) return opened;
    if (uefi::FileProtocol* base = base_directory())
        return open_below(base, name.text, firmware_mode, attributes);
    // The directory has gone for good, but a name like "..\X" leads out of it.
    if (!knows_current_path()) return opened;
    const RootedName path(volume.current_path, name.text);
    return open_below(GetVolumeRoot(), path.text(), firmware_mode, attributes);
}

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

    const std::uint64_t size = info_size(*file.get());
    if (size == 0) return false;
    PoolBuffer buffer(size + 18 + 2 * new_name.size());
    if (!read_info(*file.get(), size, buffer)) return false;

    const FirmwareName converted(new_name);
    const std::uint64_t name_bytes = 2 * (std::uint64_t{converted.length} + 1);
    copy_bytes(buffer.data() + uefi::file_info_name_offset, converted.text, name_bytes);
    const std::uint64_t new_size = uefi::file_info_name_offset + name_bytes;
    write_unaligned<std::uint64_t>(buffer.data(), new_size);
    return file.get()->SetInfo(file.get(), &uefi::file_info_guid, new_size, buffer.data()) == uefi::success;
}

std::optional<std::uint64_t> file_attributes(uefi::FileProtocol* file) {
    if (file == nullptr) return std::nullopt;
    const std::uint64_t size = info_size(*file);
    if (size == 0) return std::nullopt;
    PoolBuffer buffer(size);
    if (!read_info(*file, size, buffer)) return std::nullopt;
    return read_unaligned<std::uint64_t>(buffer.data() + attribute_offset);
}

bool IsDirectory(uefi::FileProtocol* file) {
    return (file_attributes(file).value_or(0) & uefi::file_directory) != 0;
}

bool GetPathArgument(Cursor& cursor, char (&buffer)[path_capacity]) {
    const std::uint32_t length = evaluate_text(cursor, buffer, path_capacity);
    if (error_pending()) return false;
    if (length == 0) raise(message::path_not_found);
    return length != 0;
}

FileName read_file_name(Cursor& cursor) {
    FileName name;
    name.length = evaluate_text(cursor, name.text, file_name_capacity);
    // A zero byte ends a name for the firmware, so it does here.
    name.length = static_cast<std::uint32_t>(up_to_zero(name.view()).size());
    return name;
}

bool FileName::add_default_extension(std::string_view extension) {
    const std::size_t separator = view().find_last_of("/\\:");
    const std::size_t start = separator == std::string_view::npos ? 0 : separator + 1;
    if (view().find('.', start) != std::string_view::npos) return true;
    if (length + extension.size() >= file_name_capacity) {
        raise(message::bad_file_name);
        return false;
    }
    copy_bytes(text + length, extension.data(), extension.size());
    length += static_cast<std::uint32_t>(extension.size());
    text[length] = 0;
    return true;
}

}  // namespace korvane
