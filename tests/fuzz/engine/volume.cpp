#include "volume.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "complaint.h"

namespace korvane::fuzz {

namespace {

using host::Service;
using uefi::Status;

constexpr std::uint64_t revision = 0x00010000;
constexpr std::size_t most_handles = 200'000;  // of one session

bool same_name(std::string_view left, std::string_view right) {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char a, char b) {
            return std::toupper(static_cast<unsigned char>(a)) == std::toupper(static_cast<unsigned char>(b));
        });
}

std::string narrow(const char16_t* name) {
    std::string text;
    for (; *name != 0 && text.size() < 1024; ++name)
        text += *name < 0x100 ? static_cast<char>(*name) : '?';
    return text;
}

bool is_legal(std::string_view name) {
    if (name.empty() || name.size() > 255) return false;
    return std::none_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || std::strchr("\"*/:<>?|", c) != nullptr;
    });
}

}  // namespace

struct Volume::Services {
    // What every service begins with.
    static Status begin(uefi::FileProtocol* self, Service service, Handle*& handle) {
        if (self == nullptr) return uefi::invalid_parameter;
        handle = static_cast<Handle*>(self);
        if (!handle->open) complain("a closed file handle is used");
        Volume& volume = *handle->volume;
        ++volume.uses_;
        if (volume.lies(Lie::pulled_stick)) volume.pulled_ = true;
        if (volume.pulled_) return uefi::no_media;
        return volume.faults_.strike(service).value_or(uefi::success);
    }

    static Status EFIAPI open_volume(uefi::SimpleFileSystemProtocol* self, uefi::FileProtocol** root) {
        auto& volume = *static_cast<Volume*>(self);
        if (auto failure = volume.faults_.strike(Service::OpenVolume)) return *failure;
        if (volume.pulled_) return uefi::no_media;
        *root = volume.add_handle(0, true);
        return uefi::success;
    }

    static Status EFIAPI open(uefi::FileProtocol* self, uefi::FileProtocol** opened, const char16_t* name,
                              std::uint64_t mode, std::uint64_t attributes) {
        Handle* from = nullptr;
        if (Status status = begin(self, Service::FileOpen, from); status != uefi::success) return status;
        if (opened == nullptr || name == nullptr || *name == 0) return uefi::invalid_parameter;
        Volume& volume = *from->volume;
        const std::string text = narrow(name);
        std::string_view rest = text;
        std::size_t at = rest.front() == '\\' ? 0 : from->node;
        if (!volume.nodes_[at].directory) at = volume.nodes_[at].parent;
        const bool creates = (mode & uefi::file_mode_create) != 0;
        const bool writable = (mode & uefi::file_mode_write) != 0;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find('\\'), rest.size());
            std::string_view part = rest.substr(0, end);
            rest.remove_prefix(std::min(end + 1, rest.size()));
            if (part.empty() || part == ".") continue;
            if (!volume.nodes_[at].directory) return uefi::not_found;
            if (part == "..") {
                if (at == 0) return uefi::not_found;
                at = volume.nodes_[at].parent;
                continue;
            }
            while (!part.empty() && (part.back() == '.' || part.back() == ' '))
                part.remove_suffix(1);
            if (!is_legal(part)) return uefi::invalid_parameter;
            std::size_t next = volume.find(at, part);
            if (next == none) {
                if (!creates || !rest.empty()) return uefi::not_found;
                next = volume.add_node(at, part, (attributes & uefi::file_directory) != 0);
            }
            at = next;
        }
        *opened = volume.add_handle(at, writable);
        return uefi::success;
    }

    static Status EFIAPI close(uefi::FileProtocol* self) {
        Handle* handle = nullptr;
        const Status status = begin(self, Service::FileClose, handle);
        handle->open = false;
        return status;
    }

    static Status EFIAPI remove(uefi::FileProtocol* self) {
        Handle* handle = nullptr;
        const Status status = begin(self, Service::FileDelete, handle);
        handle->open = false;
        Volume& volume = *handle->volume;
        Node& node = volume.nodes_[handle->node];
        const bool kept = handle->node == 0 || (node.directory && !volume.is_empty(handle->node));
        if (status != uefi::success || !handle->writable || kept) return uefi::warn_delete_failure;
        volume.room_ += node.bytes.size();
        node.gone = volume.changed_ = true;
        return uefi::success;
    }

    static Status EFIAPI read(uefi::FileProtocol* self, std::uint64_t* size, void* buffer) {
        Handle* handle = nullptr;
        if (Status status = begin(self, Service::FileRead, handle); status != uefi::success) return status;
        const Node& node = handle->volume->nodes_[handle->node];
        if (node.directory) return handle->volume->read_entry(*handle, size, buffer);
        if (handle->position > node.bytes.size()) return uefi::device_error;
        *size = std::min<std::uint64_t>(*size, node.bytes.size() - handle->position);
        if (handle->volume->lies(Lie::half_read)) *size /= 2;
        if (handle->volume->lies(Lie::empty_read)) *size = 0;
        std::memcpy(buffer, node.bytes.data() + handle->position, *size);
        handle->position += *size;
        return uefi::success;
    }

    static Status EFIAPI write(uefi::FileProtocol* self, std::uint64_t* size, const void* buffer) {
        Handle* handle = nullptr;
        if (Status status = begin(self, Service::FileWrite, handle); status != uefi::success) return status;
        Volume& volume = *handle->volume;
        Node& node = volume.nodes_[handle->node];
        if (node.directory) return uefi::unsupported;
        if (!handle->writable) return uefi::access_denied;
        const std::uint64_t old_size = node.bytes.size();
        const std::uint64_t room = std::max(old_size, handle->position) == old_size
                                       ? old_size - handle->position + volume.room_
                                       : volume.room_;
        const std::uint64_t fits = std::min(*size, room);
        const std::uint64_t end = handle->position + fits;
        if (end > old_size) {
            if (end - old_size > volume.room_) return uefi::volume_full;
            node.bytes.resize(end);
            volume.room_ -= end - old_size;
        }
        std::memcpy(node.bytes.data() + handle->position, buffer, fits);
        handle->position = end;
        volume.changed_ = true;
        if (volume.lies(Lie::half_write)) {
            *size = fits / 2;
            return uefi::success;
        }
        const bool full = fits != *size;
        *size = fits;
        return full ? uefi::volume_full : uefi::success;
    }

    static Status EFIAPI get_position(uefi::FileProtocol* self, std::uint64_t* position) {
        Handle* handle = nullptr;
        if (Status status = begin(self, Service::FileGetPosition, handle); status != uefi::success)
            return status;
        *position = handle->position;
        return handle->volume->nodes_[handle->node].directory ? uefi::unsupported : uefi::success;
    }

    static Status EFIAPI set_position(uefi::FileProtocol* self, std::uint64_t position) {
        Handle* handle = nullptr;
        if (Status status = begin(self, Service::FileSetPosition, handle); status != uefi::success)
            return status;
        const Node& node = handle->volume->nodes_[handle->node];
        if (node.directory && position != 0) return uefi::unsupported;
        handle->position = position == uefi::end_of_file_position ? node.bytes.size() : position;
        return uefi::success;
    }

    static Status EFIAPI get_info(uefi::FileProtocol* self, const uefi::Guid* type, std::uint64_t* size,
                                  void* buffer) {
        Handle* handle = nullptr;
        if (Status status = begin(self, Service::FileGetInfo, handle); status != uefi::success) return status;
        if (*type == uefi::file_info_guid) {
            const Node& node = handle->volume->nodes_[handle->node];
            return handle->volume->put_information(node, node.name, size, buffer);
        }
        if (!(*type == uefi::file_system_info_guid)) return uefi::unsupported;
        constexpr std::uint64_t needed = uefi::file_system_info_label_offset + 4;
        if (*size < needed) {
            *size = needed;
            return uefi::buffer_too_small;
        }
        std::memset(buffer, 0, needed);
        auto* info = static_cast<uefi::FileSystemInfo*>(buffer);
        info->Size = *size = needed;
        info->VolumeSize = info->FreeSpace = handle->volume->room_;
        info->BlockSize = 512;
        info->VolumeLabel[0] = u'F';
        return uefi::success;
    }

    static Status EFIAPI set_info(uefi::FileProtocol* self, const uefi::Guid* type, std::uint64_t size,
                                  const void* buffer) {
        Handle* handle = nullptr;
        if (Status status = begin(self, Service::FileSetInfo, handle); status != uefi::success) return status;
        if (!(*type == uefi::file_info_guid)) return uefi::unsupported;
        if (size < uefi::file_info_name_offset + sizeof(char16_t)) return uefi::bad_buffer_size;
        if (!handle->writable) return uefi::access_denied;
        Volume& volume = *handle->volume;
        const auto* info = static_cast<const uefi::FileInfo*>(buffer);
        std::string name;
        for (std::uint64_t at = uefi::file_info_name_offset; at + 1 < size; at += sizeof(char16_t)) {
            char16_t unit = 0;
            std::memcpy(&unit, static_cast<const std::uint8_t*>(buffer) + at, sizeof unit);
            if (unit == 0) break;
            name += unit < 0x100 ? static_cast<char>(unit) : '?';
        }
        Node& node = volume.nodes_[handle->node];
        if (name != node.name) {
            std::size_t folder = node.parent;
            if (name.starts_with('\\')) {
                folder = 0;
                name.erase(0, 1);
            }
            for (std::size_t end = name.find('\\'); end != std::string::npos; end = name.find('\\')) {
                folder = volume.find(folder, std::string_view(name).substr(0, end));
                if (folder == none || !volume.nodes_[folder].directory) return uefi::not_found;
                name.erase(0, end + 1);
            }
            if (!is_legal(name) || handle->node == 0) return uefi::invalid_parameter;
            const std::size_t other = volume.find(folder, name);
            if (other != none && other != handle->node) return uefi::access_denied;
            node.name = name;
            node.parent = folder;
            volume.changed_ = true;
        }
        if (!node.directory && info->FileSize != node.bytes.size()) {
            const std::uint64_t old_size = node.bytes.size();
            if (info->FileSize > old_size && info->FileSize - old_size > volume.room_)
                return uefi::volume_full;
            node.bytes.resize(info->FileSize);
            volume.room_ += old_size - info->FileSize;
            volume.changed_ = true;
        }
        return uefi::success;
    }

    static Status EFIAPI flush(uefi::FileProtocol* self) {
        Handle* handle = nullptr;
        return begin(self, Service::FileFlush, handle);
    }
};

Volume::Volume(host::ServiceFaults& faults)
    : uefi::SimpleFileSystemProtocol{revision, Services::open_volume}, faults_(faults) {
    nodes_.push_back({"", "", 0, true, false});
}

uefi::FileProtocol* Volume::add_handle(std::size_t node, bool writable) {
    if (handles_.size() > most_handles) complain("there is no end of opened files");
    Handle& handle = handles_.emplace_back();
    static_cast<uefi::FileProtocol&>(handle) = {
        revision,           Services::open,     Services::close,        Services::remove,
        Services::read,     Services::write,    Services::get_position, Services::set_position,
        Services::get_info, Services::set_info, Services::flush};
    handle.volume = this;
    handle.node = node;
    handle.writable = writable;
    return &handle;
}

std::size_t Volume::find(std::size_t directory, std::string_view name) const {
    for (std::size_t i = 1; i < nodes_.size(); ++i)
        if (!nodes_[i].gone && nodes_[i].parent == directory && same_name(nodes_[i].name, name)) return i;
    return none;
}

std::size_t Volume::add_node(std::size_t directory, std::string_view name, bool is_directory) {
    changed_ = true;
    nodes_.push_back({std::string(name), "", directory, is_directory, false});
    return nodes_.size() - 1;
}

bool Volume::is_empty(std::size_t directory) const {
    return std::none_of(
        nodes_.begin() + 1, nodes_.end(),
        [=](const Node& node) { return !node.gone && node.parent == directory; });
}

void Volume::put_file(std::string_view path, std::string content) {
    std::size_t at = 0;
    for (std::size_t end = path.find('/'); end != std::string_view::npos; end = path.find('/')) {
        const std::string_view part = path.substr(0, end);
        const std::size_t next = find(at, part);
        at = next != none ? next : add_node(at, part, true);
        path.remove_prefix(end + 1);
    }
    std::size_t node = find(at, path);
    if (node == none) node = add_node(at, path, false);
    nodes_[node].bytes = std::move(content);
    changed_ = true;
}

const std::string* Volume::file(std::string_view path) const {
    const std::size_t node = find(0, path);
    return node == none ? nullptr : &nodes_[node].bytes;
}

std::map<std::string, std::string> Volume::files() const {
    std::map<std::string, std::string> all;
    for (std::size_t i = 1; i < nodes_.size(); ++i) {
        if (nodes_[i].gone) continue;
        std::string path = nodes_[i].name;
        for (std::size_t at = nodes_[i].parent; at != 0; at = nodes_[at].parent)
            path = nodes_[at].name + '/' + path;
        if (nodes_[i].directory) path += '/';
        all[path] = nodes_[i].bytes;
    }
    return all;
}

uefi::Status Volume::put_information(const Node& node, std::string_view name, std::uint64_t* size,
                                     void* buffer) const {
    const std::uint64_t needed = uefi::file_info_name_offset + (name.size() + 1) * sizeof(char16_t);
    if (*size < needed) {
        *size = needed;
        return uefi::buffer_too_small;
    }
    *size = needed;
    std::memset(buffer, 0, needed);
    auto* info = static_cast<uefi::FileInfo*>(buffer);
    info->Size = needed;
    info->FileSize = info->PhysicalSize = node.bytes.size();
    info->Attribute = node.directory ? uefi::file_directory : uefi::file_archive;
    info->ModificationTime = {2024, 2, 29, 23, 59, 58, 0, 0, 2047, 0, 0};
    auto* to = static_cast<std::uint8_t*>(buffer) + uefi::file_info_name_offset;
    for (const char c : name) {
        *to = static_cast<std::uint8_t>(c);
        to += sizeof(char16_t);
    }
    if (lies(Lie::huge_size)) info->FileSize = ~std::uint64_t{0} - 7;
    if (lies(Lie::long_name))
        std::memset(static_cast<std::uint8_t*>(buffer) + uefi::file_info_name_offset, 'n',
                    needed - uefi::file_info_name_offset);
    return uefi::success;
}

void Volume::lie_at(std::uint64_t use, Lie lie) {
    lie_ = lie;
    lie_at_ = use;
    uses_ = 0;
}

uefi::Status Volume::read_entry(Handle& directory, std::uint64_t* size, void* buffer) {
    if (raw_directory_) {
        const std::string& raw = *raw_directory_;
        if (directory.position >= raw.size()) {
            *size = 0;
            return uefi::success;
        }
        const std::uint64_t length = static_cast<unsigned char>(raw[directory.position]);
        if (length > *size) {
            *size = length;
            return uefi::buffer_too_small;
        }
        ++directory.position;
        *size = std::min<std::uint64_t>(length, raw.size() - directory.position);
        std::memcpy(buffer, raw.data() + directory.position, *size);
        directory.position += *size;
        return uefi::success;
    }
    // "." and ".." come first in a subdirectory; positions 1 and 2 stand for them.
    if (directory.position == 0) directory.position = directory.node == 0 ? 3 : 1;
    if (directory.position < 3) {
        const Status status =
            put_information(nodes_[directory.node], directory.position == 1 ? "." : "..", size, buffer);
        if (status == uefi::success) ++directory.position;
        return status;
    }
    for (std::uint64_t i = directory.position - 2; i < nodes_.size(); ++i) {
        if (nodes_[i].gone || nodes_[i].parent != directory.node) continue;
        const Status status = put_information(nodes_[i], nodes_[i].name, size, buffer);
        if (status == uefi::success) directory.position = i + 3;
        return status;
    }
    *size = 0;
    return uefi::success;
}

std::size_t Volume::open_handles() const {
    return static_cast<std::size_t>(std::count_if(
        handles_.begin(), handles_.end(), [](const Handle& handle) { return handle.open; }));
}

void Volume::save() {
    saved_nodes_ = nodes_;
    saved_handles_ = handles_;
    saved_room_ = room_;
    changed_ = false;
}

void Volume::put_back() {
    if (changed_) nodes_ = saved_nodes_;
    handles_.resize(saved_handles_.size());
    std::copy(saved_handles_.begin(), saved_handles_.end(), handles_.begin());
    raw_directory_.reset();
    room_ = saved_room_;
    lie_at(0, Lie::none);
    changed_ = pulled_ = false;
}

}  // namespace korvane::fuzz
