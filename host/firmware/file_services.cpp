#include "file_services.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "fat_names.h"
#include "file_information.h"
#include "host_text.h"
#include "program_file.h"
#include "unicode.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t file_protocol_revision = 0x00010000;
constexpr std::size_t longest_name = 255;

bool is_open_mode(std::uint64_t mode) {
    using namespace uefi;
    return mode == file_mode_read || mode == (file_mode_read | file_mode_write) ||
           mode == (file_mode_read | file_mode_write | file_mode_create);
}

// The parts of a name between backslashes; empty ones, which come from doubled or closing backslashes, are
// left out.
std::vector<std::u16string> split(std::u16string_view name) {
    std::vector<std::u16string> parts;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find(u'\\'), name.size());
        if (end != 0) parts.emplace_back(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return parts;
}

// FAT keeps neither the blanks in front of a name nor the dots and blanks at its end.
std::u16string_view kept_name(std::u16string_view name) {
    while (!name.empty() && name.front() == u' ')
        name.remove_prefix(1);
    while (!name.empty() && (name.back() == u'.' || name.back() == u' '))
        name.remove_suffix(1);
    return name;
}

std::uint64_t size_of(const OpenFile& file) {
    const auto status = file.descriptor.status();
    return status ? status->size : 0;
}

std::string contents_of(const OpenFile& file) {
    std::string bytes(size_of(file), '\0');
    bytes.resize(file.descriptor.read(bytes.data(), bytes.size(), 0).value_or(0));
    return bytes;
}

bool write_all(const Descriptor& file, std::string_view bytes) {
    return file.write(bytes.data(), bytes.size(), 0) == bytes.size() && file.resize(bytes.size());
}

}  // namespace

uefi::FileProtocol FileServices::table() {
    return {file_protocol_revision, open,         close,    remove,   read, write,
            get_position,           set_position, get_info, set_info, flush};
}

// What every service begins with: the check that the handle is open, the injected failure, and the check that
// the media is there.
uefi::Status FileServices::begin(uefi::FileProtocol* self, Service service, OpenFile*& file) {
    if (self == nullptr) return uefi::invalid_parameter;
    file = static_cast<OpenFile*>(self);
    if (file->closed) {
        file->volume.misuse_.report(std::string(service_name(service)) + " on a closed file handle");
        return uefi::invalid_parameter;
    }
    return file->volume.faults_.strike(service).value_or(file->volume.lost_);
}

uefi::Status FileServices::locate(const OpenFile& from, std::u16string_view name, Place& place) {
    const Folder& folder = from.volume.folder_;
    place = {name.front() == u'\\' ? FolderPath{} : from.path, true};
    if (name.front() != u'\\' && !from.directory) place.path.pop_back();
    for (const std::u16string& part : split(name)) {
        // Only the last part may be missing.
        if (!place.exists) return uefi::not_found;
        const auto here = folder.status(place.path);
        if (!here || !here->is_directory) return uefi::not_found;
        if (part == u".") continue;
        if (part == u"..") {
            if (place.path.empty()) return uefi::not_found;
            place.path.pop_back();
            continue;
        }
        const std::string wanted = to_utf8(kept_name(part));
        if (!is_legal_name(wanted)) return uefi::invalid_parameter;
        const auto found = folder.find(place.path, wanted);
        place.exists = found.has_value();
        place.path.push_back(found.value_or(wanted));
    }
    return uefi::success;
}

uefi::Status FileServices::open_lent(const OpenFile& from, std::u16string_view name, std::uint64_t mode,
                                     uefi::FileProtocol** opened) {
    Volume& volume = from.volume;
    std::vector<std::string> wanted = name.front() == u'\\' ? FolderPath{} : from.path;
    for (const std::u16string& part : split(name)) {
        if (part == u"." || (part == u".." && wanted.empty())) continue;
        if (part == u"..")
            wanted.pop_back();
        else
            wanted.push_back(to_utf8(kept_name(part)));
    }
    const auto lent = std::find_if(volume.lent_.begin(), volume.lent_.end(), [&](const LentFile& one) {
        return std::equal(wanted.begin(), wanted.end(), one.path.begin(), one.path.end(), same_name);
    });
    if (lent == volume.lent_.end()) return uefi::not_found;
    const bool writes = mode != uefi::file_mode_read;
    if (writes && !lent->writable) return uefi::write_protected;
    Descriptor descriptor = open_host_file(lent->source, writes);
    if (!descriptor) return writes ? uefi::access_denied : uefi::not_found;
    OpenFile* file = volume.add_handle(lent->path);
    file->descriptor = std::move(descriptor);
    file->writable = writes;
    file->lent = true;
    file->fresh = writes && size_of(*file) == 0;
    present_program(*file);
    *opened = file;
    return uefi::success;
}

uefi::Status FileServices::open_existing(Volume& volume, const FolderPath& path, std::uint64_t mode,
                                         std::uint64_t attributes, bool creates,
                                         uefi::FileProtocol** opened) {
    const auto status = volume.folder_.status(path);
    if (!status) return uefi::not_found;
    const bool directory = status->is_directory;
    const bool writable = (mode & uefi::file_mode_write) != 0;
    const bool creating = (mode & uefi::file_mode_create) != 0;
    // A directory where a file was to be created is opened as it is, as the FAT driver of the reference
    // firmware does it.
    if (creating && !directory && (attributes & uefi::file_directory) != 0) return uefi::access_denied;
    if (writable && (attributes_of(*status) & uefi::file_read_only) != 0) return uefi::access_denied;

    Descriptor descriptor;
    if (!directory) {
        descriptor = volume.folder_.open(path, writable);
        if (!descriptor) return uefi::access_denied;
    }
    OpenFile* file = volume.add_handle(path);
    file->directory = directory;
    file->writable = writable;
    file->descriptor = std::move(descriptor);
    file->fresh = creates;
    present_program(*file);
    *opened = file;
    return uefi::success;
}

// Reading shows a program as the image understands it.
void FileServices::present_program(OpenFile& file) {
    Volume& volume = file.volume;
    if (!volume.host_programs_ || file.directory || file.writable || !has_program_name(file.path.back()))
        return;
    if (size_of(file) > largest_program_file) return;
    const std::string bytes = contents_of(file);
    const ProgramText program = read_program(bytes);
    const auto note = [&](const std::string& text) {
        return text.empty() ? text : file.path.back() + ", " + text;
    };
    volume.program_notes_ = {note(program.fault), note(program.loss)};
    if (program.codes == bytes || (program.codes.empty() && !program.fault.empty())) return;
    Descriptor converted = make_nameless_file();
    if (!converted || !write_all(converted, program.codes)) return;
    file.descriptor = std::move(converted);
}

// A program that the image has written becomes text of the host.
void FileServices::store_program(OpenFile& file) {
    if (!file.volume.host_programs_ || file.directory || !file.fresh || !has_program_name(file.path.back()))
        return;
    if (size_of(file) > largest_program_file) return;
    const std::string codes = contents_of(file);
    const std::string text = to_host_text(codes);
    if (text != codes) write_all(file.descriptor, text);
}

uefi::Status EFIAPI FileServices::open(uefi::FileProtocol* self, uefi::FileProtocol** opened,
                                       const char16_t* name, std::uint64_t mode, std::uint64_t attributes) {
    OpenFile* from = nullptr;
    if (auto status = begin(self, Service::FileOpen, from); status != uefi::success) return status;
    if (opened == nullptr || name == nullptr || *name == 0 || !is_open_mode(mode))
        return uefi::invalid_parameter;
    const bool creating = (mode & uefi::file_mode_create) != 0;
    if (creating && (attributes & ~uefi::file_valid_attributes) != 0) return uefi::invalid_parameter;
    Volume& volume = from->volume;
    if ((mode & uefi::file_mode_write) != 0 && volume.read_only_) return uefi::write_protected;

    Place place;
    const uefi::Status located = locate(*from, name, place);
    if (located == uefi::not_found || (located == uefi::success && !place.exists)) {
        const uefi::Status lent = open_lent(*from, name, mode, opened);
        if (lent != uefi::not_found) return lent;
    }
    if (located != uefi::success) return located;
    if (place.exists) return open_existing(volume, place.path, mode, attributes, false, opened);
    if (!creating) return uefi::not_found;
    const bool directory = (attributes & uefi::file_directory) != 0;
    const bool created =
        directory ? volume.folder_.create_directory(place.path) : volume.folder_.create_file(place.path);
    if (!created) return uefi::device_error;
    return open_existing(volume, place.path, mode, attributes, true, opened);
}

// A failing close closes too: there is nothing else that a caller could do.
uefi::Status EFIAPI FileServices::close(uefi::FileProtocol* self) {
    OpenFile* file = nullptr;
    const uefi::Status status = begin(self, Service::FileClose, file);
    if (file == nullptr || file->closed) return status;
    store_program(*file);
    file->closed = true;
    file->descriptor = {};
    if (file->writable && !file->lent) file->volume.folder_.settled(file->path);
    return status;
}

// The handle is gone whatever becomes of the file (UEFI 2.10, section 13.5).
uefi::Status EFIAPI FileServices::remove(uefi::FileProtocol* self) {
    OpenFile* file = nullptr;
    const uefi::Status status = begin(self, Service::FileDelete, file);
    if (file == nullptr || file->closed) return status;
    file->closed = true;
    if (status != uefi::success) {
        file->descriptor = {};
        return uefi::warn_delete_failure;
    }
    const std::uint64_t size = file->directory ? 0 : size_of(*file);
    if (file->lent && file->writable && file->descriptor.resize(0)) {
        file->descriptor = {};
        return uefi::success;
    }
    file->descriptor = {};
    if (!file->writable || file->path.empty() || !file->volume.folder_.remove(file->path))
        return uefi::warn_delete_failure;
    file->volume.free_bytes_ += size;
    return uefi::success;
}

uefi::Status FileServices::read_entry(OpenFile& directory, std::uint64_t* size, void* buffer) {
    const Folder& folder = directory.volume.folder_;
    if (directory.position == 0) {
        directory.entries = folder.list(directory.path);
        // A subdirectory begins with itself and its parent.
        if (!directory.path.empty()) directory.entries.insert(directory.entries.begin(), {".", ".."});
    }
    while (directory.position < directory.entries.size()) {
        const std::string& name = directory.entries[directory.position];
        FolderPath path = directory.path;
        if (name == "..") path.pop_back();
        if (name != "." && name != "..") path.push_back(name);
        const auto status = folder.status(path);
        if (!status) {
            // Deleted since the listing began.
            ++directory.position;
            continue;
        }
        const uefi::Status result = put_file_information(*status, name, size, buffer);
        if (result == uefi::success) ++directory.position;
        return result;
    }
    *size = 0;
    return uefi::success;
}

uefi::Status EFIAPI FileServices::read(uefi::FileProtocol* self, std::uint64_t* size, void* buffer) {
    OpenFile* file = nullptr;
    if (auto status = begin(self, Service::FileRead, file); status != uefi::success) return status;
    if (size == nullptr) return uefi::invalid_parameter;
    if (file->directory) return read_entry(*file, size, buffer);
    if (buffer == nullptr && *size != 0) return uefi::invalid_parameter;
    if (file->position > size_of(*file)) return uefi::device_error;
    const auto count = file->descriptor.read(buffer, *size, file->position);
    if (!count) return uefi::device_error;
    *size = *count;
    file->position += *size;
    return uefi::success;
}

// Whoever goes on writing behind a write that failed leaves a file with a gap.
uefi::Status EFIAPI FileServices::write(uefi::FileProtocol* self, std::uint64_t* size, const void* buffer) {
    OpenFile* file = nullptr;
    uefi::Status status = begin(self, Service::FileWrite, file);
    if (file == nullptr || file->closed) return status;
    if (file->write_failed) file->volume.misuse_.report("FileWrite behind a write that failed");
    if (size == nullptr || (buffer == nullptr && *size != 0)) return uefi::invalid_parameter;
    if (status == uefi::success) status = write_bytes(*file, size, buffer);
    file->write_failed = status != uefi::success;
    return status;
}

uefi::Status FileServices::write_bytes(OpenFile& file, std::uint64_t* size, const void* buffer) {
    if (file.directory) return uefi::unsupported;
    if (!file.writable) return uefi::access_denied;

    // FAT holds files of less than 4 GiB.
    constexpr std::uint64_t largest_file = 0xFFFFFFFF;
    if (file.position > largest_file || *size > largest_file - file.position) return uefi::volume_full;
    const std::uint64_t old_size = size_of(file);
    const std::uint64_t end = file.position + *size;
    const std::uint64_t growth = end > old_size ? end - old_size : 0;
    const bool full = growth > file.volume.free_bytes_;
    if (full) *size -= std::min(*size, growth - file.volume.free_bytes_);
    const auto count = file.descriptor.write(buffer, *size, file.position);
    if (!count) return uefi::device_error;
    *size = *count;
    file.position += *size;
    const std::uint64_t new_size = size_of(file);
    if (new_size > old_size) file.volume.free_bytes_ -= new_size - old_size;
    return full ? uefi::volume_full : uefi::success;
}

uefi::Status EFIAPI FileServices::get_position(uefi::FileProtocol* self, std::uint64_t* position) {
    OpenFile* file = nullptr;
    if (auto status = begin(self, Service::FileGetPosition, file); status != uefi::success) return status;
    if (position == nullptr) return uefi::invalid_parameter;
    if (file->directory) return uefi::unsupported;
    *position = file->position;
    return uefi::success;
}

uefi::Status EFIAPI FileServices::set_position(uefi::FileProtocol* self, std::uint64_t position) {
    OpenFile* file = nullptr;
    if (auto status = begin(self, Service::FileSetPosition, file); status != uefi::success) return status;
    if (file->directory && position != 0) return uefi::unsupported;
    file->write_failed = false;
    file->position = position == uefi::end_of_file_position ? size_of(*file) : position;
    return uefi::success;
}

uefi::Status FileServices::file_system_information(const Volume& volume, std::uint64_t* size, void* buffer) {
    uefi::FileSystemInfo information{};
    information.ReadOnly = volume.read_only_ ? 1 : 0;
    information.VolumeSize = volume.size_;
    information.FreeSpace = volume.free_bytes_;
    information.BlockSize = 512;
    return put_named_record(information, uefi::file_system_info_label_offset, volume.label_, size, buffer);
}

uefi::Status EFIAPI FileServices::get_info(uefi::FileProtocol* self, const uefi::Guid* type,
                                           std::uint64_t* size, void* buffer) {
    OpenFile* file = nullptr;
    if (auto status = begin(self, Service::FileGetInfo, file); status != uefi::success) return status;
    if (type == nullptr || size == nullptr) return uefi::invalid_parameter;
    if (*type == uefi::file_system_info_guid) return file_system_information(file->volume, size, buffer);
    if (!(*type == uefi::file_info_guid)) return uefi::unsupported;
    const auto status =
        file->descriptor ? file->descriptor.status() : file->volume.folder_.status(file->path);
    if (!status) return uefi::device_error;
    return put_file_information(*status, file->path.empty() ? "" : file->path.back(), size, buffer);
}

uefi::Status FileServices::rename(OpenFile& file, std::u16string_view name) {
    if (file.path.empty()) return uefi::access_denied;
    if (name.size() > longest_name) return uefi::invalid_parameter;
    // A name without a path names an entry of the file's own directory.
    OpenFile directory(file.volume, FolderPath(file.path.begin(), file.path.end() - 1));
    directory.directory = true;
    Place place;
    if (auto status = locate(directory, name, place); status != uefi::success) return status;
    if (place.exists && place.path != file.path) return uefi::access_denied;
    if (place.exists) {
        // The same entry: only the spelling may change.
        const auto parts = split(name);
        const std::string spelling = to_utf8(kept_name(parts.back()));
        if (!is_legal_name(spelling)) return uefi::invalid_parameter;
        place.path.back() = spelling;
    }
    const FolderPath old_path = file.path;
    if (!file.volume.folder_.rename(old_path, place.path)) return uefi::access_denied;
    // Other handles stay with their file, or with what lies in the directory.
    for (const auto& handle : file.volume.handles_) {
        FolderPath& path = handle->path;
        const auto rest = std::mismatch(old_path.begin(), old_path.end(), path.begin(), path.end());
        if (rest.first != old_path.end()) continue;
        FolderPath moved = place.path;
        moved.insert(moved.end(), rest.second, path.end());
        path = std::move(moved);
    }
    return uefi::success;
}

uefi::Status FileServices::change_size(OpenFile& file, std::uint64_t size) {
    const std::uint64_t old_size = size_of(file);
    if (size > old_size && size - old_size > file.volume.free_bytes_) return uefi::volume_full;
    if (!file.descriptor.resize(size)) return uefi::device_error;
    file.volume.free_bytes_ += old_size - size;
    return uefi::success;
}

uefi::Status EFIAPI FileServices::set_info(uefi::FileProtocol* self, const uefi::Guid* type,
                                           std::uint64_t size, const void* buffer) {
    OpenFile* file = nullptr;
    if (auto status = begin(self, Service::FileSetInfo, file); status != uefi::success) return status;
    if (type == nullptr) return uefi::invalid_parameter;
    if (!(*type == uefi::file_info_guid)) return uefi::unsupported;
    const auto wanted = take_file_information(size, buffer);
    if (!wanted) return uefi::bad_buffer_size;
    if (file->volume.read_only_) return uefi::write_protected;
    if (!file->writable) return uefi::access_denied;
    if ((wanted->attributes & ~uefi::file_valid_attributes) != 0) return uefi::invalid_parameter;
    if (((wanted->attributes & uefi::file_directory) != 0) != file->directory) return uefi::access_denied;
    const std::u16string name = to_utf16(file->path.empty() ? "" : file->path.back()).value_or(u"");
    if (wanted->name != name) {
        if (wanted->name.empty()) return uefi::invalid_parameter;
        if (auto status = rename(*file, wanted->name); status != uefi::success) return status;
    }
    if (!file->directory && wanted->file_size != size_of(*file)) return change_size(*file, wanted->file_size);
    return uefi::success;
}

uefi::Status EFIAPI FileServices::flush(uefi::FileProtocol* self) {
    OpenFile* file = nullptr;
    if (auto status = begin(self, Service::FileFlush, file); status != uefi::success) return status;
    if (!file->writable) return uefi::access_denied;
    if (!file->directory && !file->lent) file->volume.folder_.settled(file->path);
    return uefi::success;
}

}  // namespace korvane::host
