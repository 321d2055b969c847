#include "files/own_image.h"

#include <span>

#include "files/volume.h"
#include "platform/characters.h"
#include "platform/device_path.h"
#include "platform/firmware.h"
#include "platform/memory.h"

namespace korvane {

namespace {

constexpr std::uint32_t max_image_path = 511;  // characters of the running image's path
constexpr std::uint32_t max_entry_name = 255;  // characters of a file's or directory's name
constexpr int max_directory_depth = 256;       // more cannot be named

using EntryName = char16_t[max_entry_name + 1];

// The running image's name as its volume spells it, noted whenever its file is opened; else empty.
EntryName own_name;

// Appends a File Path node's text to `path`.
// False when a character is wider than 8 bits or the path gets too long.
bool append_path_text(std::span<const std::uint8_t> text, char16_t* path, std::uint32_t& length) {
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const auto unit = read_unaligned<char16_t>(text.data() + i);
        if (unit == 0) break;
        if (unit > 0xFF || length == max_image_path) return false;
        path[length++] = unit;
    }
    return true;
}

// The path of the running image, zero-terminated, from its device path. False when there is none.
bool find_image_path(const uefi::DevicePathNode* first, char16_t (&path)[max_image_path + 1]) {
    std::uint32_t length = 0;
    DevicePathReader reader(whole_device_path(first));
    while (const auto node = reader.next()) {
        if (node->ends_instance()) break;
        const bool is_name =
            node->type == uefi::device_path_media && node->sub_type == uefi::device_path_media_file_path;
        if (is_name && !append_path_text(node->body, path, length)) return false;
    }
    path[length] = 0;
    return length != 0;
}

bool same_name(const char16_t* left, const char16_t* right) {
    while (*left != 0 && fold_to_upper(*left) == fold_to_upper(*right)) {
        ++left;
        ++right;
    }
    return *left == *right;
}

// The name of an open file or directory as the volume holds it, however it was spelled when it was opened.
// False when the firmware does not tell.
bool read_entry_name(uefi::FileProtocol* file, EntryName& name) {
    alignas(8) std::uint8_t record[uefi::file_info_name_offset + sizeof(EntryName)];
    std::uint64_t size = sizeof record;
    fill_bytes(record, 0, sizeof record);
    if (file == nullptr || uefi::is_error(file->GetInfo(file, &uefi::file_info_guid, &size, record)))
        return false;
    copy_bytes(name, record + uefi::file_info_name_offset, sizeof(EntryName));
    name[max_entry_name] = 0;
    return true;
}

// Where the last part of a path begins. Separators behind it are cut off.
std::uint32_t last_part(char16_t* path) {
    std::uint32_t end = 0;
    while (path[end] != 0)
        ++end;
    while (end != 0 && path[end - 1] == u'\\')
        path[--end] = 0;
    while (end != 0 && path[end - 1] != u'\\')
        --end;
    return end;
}

// Puts "." in the place of a path's last part, so that it names the directory.
void name_directory(char16_t* path, std::uint32_t part) {
    path[part] = u'.';
    path[part + 1] = 0;
}

// Compares two directories name by name up to the root.
// False also when the firmware does not show enough of them.
bool are_different(FileHandle left, FileHandle right) {
    for (int depth = 0; depth < max_directory_depth && left && right; ++depth) {
        EntryName left_name;
        EntryName right_name;
        if (!read_entry_name(left.get(), left_name) || !read_entry_name(right.get(), right_name)) break;
        if (!same_name(left_name, right_name)) return true;
        left = open_below(left.get(), u"..", uefi::file_mode_read);
        right = open_below(right.get(), u"..", uefi::file_mode_read);
    }
    return false;
}

}  // namespace

FileHandle open_own_image() {
    own_name[0] = 0;
    const uefi::LoadedImageProtocol* loaded = loaded_image();
    char16_t path[max_image_path + 1];
    if (loaded == nullptr || !find_image_path(loaded->FilePath, path)) return FileHandle();
    FileHandle image = open_from_root(path, uefi::file_mode_read);
    if (!read_entry_name(image.get(), own_name)) own_name[0] = 0;
    return image;
}

bool is_own_image(uefi::FileProtocol* file, const FirmwareName& name) {
    const uefi::LoadedImageProtocol* loaded = loaded_image();
    if (loaded == nullptr) return true;
    char16_t own_path[max_image_path + 1];
    if (!find_image_path(loaded->FilePath, own_path)) return false;
    const std::uint32_t own_part = last_part(own_path);
    FirmwareName path = name;
    const std::uint32_t part = last_part(path.text);

    EntryName entry_name;
    const char16_t* known_name = own_name[0] != 0 ? own_name : own_path + own_part;
    if (!same_name(known_name, read_entry_name(file, entry_name) ? entry_name : path.text + part))
        return false;
    name_directory(own_path, own_part);
    name_directory(path.text, part);
    return !are_different(open_from_root(own_path, uefi::file_mode_read),
                          open_named(path, uefi::file_mode_read));
}

}  // namespace korvane
