#include "files/own_image.h"

#include <span>

#include "platform/firmware.h"
#include "platform/memory.h"

namespace korvane {

namespace {

constexpr std::uint32_t max_image_path = 511;  // characters of the running image's path
constexpr int max_device_path_nodes = 1024;    // a path without an end node is given up here

// Appends a File Path node's text to `path`. False when a character is wider than 8 bits or the path gets too
// long.
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
bool find_image_path(const uefi::DevicePathNode* node, char16_t (&path)[max_image_path + 1]) {
    std::uint32_t length = 0;
    for (int count = 0; node != nullptr && count < max_device_path_nodes; ++count) {
        if (node->Type == uefi::device_path_end) break;
        const auto node_length = read_unaligned<std::uint16_t>(node->Length.data());
        if (node_length < sizeof(uefi::DevicePathNode)) break;
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(node);
        if (node->Type == uefi::device_path_media && node->SubType == uefi::device_path_media_file_path) {
            const std::span text(bytes + sizeof(uefi::DevicePathNode),
                                 node_length - sizeof(uefi::DevicePathNode));
            if (!append_path_text(text, path, length)) return false;
        }
        node = reinterpret_cast<const uefi::DevicePathNode*>(bytes + node_length);
    }
    path[length] = 0;
    return length != 0;
}

char16_t fold(char16_t unit) {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

const char16_t* skip_separators(const char16_t* at) {
    while (*at == u'\\')
        ++at;
    return at;
}

// Compares two paths from the root without regard to case and to repeated separators.
bool same_path(const char16_t* left, const char16_t* right) {
    left = skip_separators(left);
    right = skip_separators(right);
    while (*left != 0 && fold(*left) == fold(*right)) {
        const bool separator = *left == u'\\';
        ++left;
        ++right;
        if (separator) {
            left = skip_separators(left);
            right = skip_separators(right);
        }
    }
    return *left == 0 && *right == 0;
}

}  // namespace

FileHandle open_own_image() {
    const uefi::LoadedImageProtocol* image = loaded_image();
    char16_t path[max_image_path + 1];
    if (image == nullptr || !find_image_path(image->FilePath, path)) return FileHandle();
    return open_below(GetVolumeRoot(), path, uefi::file_mode_read);
}

bool names_own_image(std::string_view name) {
    const FirmwareName converted(name);
    if (volume.current_directory != nullptr && converted.text[0] != u'\\') return false;
    const uefi::LoadedImageProtocol* image = loaded_image();
    char16_t path[max_image_path + 1];
    return image != nullptr && find_image_path(image->FilePath, path) && same_path(path, converted.text);
}

}  // namespace korvane
