#include "files/boot_volume.h"

#include <algorithm>
#include <span>

#include "platform/device_path.h"
#include "platform/firmware.h"
#include "platform/handle_list.h"
#include "platform/memory.h"

namespace korvane {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t max_identity = 256;  // bytes

// What tells the volume from others; none noted when the size is 0.
struct Identity {
    std::size_t size;
    std::uint8_t bytes[max_identity];
};
Identity noted;

// True when a hard drive node names its partition by more than its place on the disk.
bool has_signature(const DevicePathElement& node) {
    constexpr std::size_t signature = 20;
    constexpr std::size_t signature_type = 37;
    return node.field<std::uint8_t>(signature_type) != 0 &&
           (node.field<std::uint64_t>(signature) | node.field<std::uint64_t>(signature + 8)) != 0;
}

// The partition's node, which is the same whatever the stick is plugged into; else the whole device path.
Bytes identity_of(uefi::Handle device) {
    const Bytes path = device_path_of(device);
    Bytes identity = path;
    DevicePathReader reader(path);
    while (const auto node = reader.next()) {
        const bool is_drive =
            node->type == uefi::device_path_media && node->sub_type == uefi::device_path_media_hard_drive;
        if (is_drive && has_signature(*node)) identity = node->body;
    }
    return identity;
}

bool is_noted_volume(uefi::Handle device) {
    const Bytes identity = identity_of(device);
    return std::equal(identity.begin(), identity.end(), noted.bytes, noted.bytes + noted.size);
}

uefi::Handle image_device() {
    const uefi::LoadedImageProtocol* image = loaded_image();
    return image == nullptr ? nullptr : image->DeviceHandle;
}

}  // namespace

FileHandle open_root(uefi::Handle device) {
    auto* file_system =
        static_cast<uefi::SimpleFileSystemProtocol*>(find_interface(device, uefi::simple_file_system_guid));
    uefi::FileProtocol* root = nullptr;
    if (file_system == nullptr || uefi::is_error(file_system->OpenVolume(file_system, &root))) return {};
    return FileHandle(root);
}

void forget_boot_volume() {
    noted.size = 0;
}

FileHandle open_boot_volume() {
    const uefi::Handle device = image_device();
    FileHandle root = open_root(device);
    if (!root) return root;
    const Bytes identity = identity_of(device);
    noted.size = identity.size() <= max_identity ? identity.size() : 0;
    copy_bytes(noted.bytes, identity.data(), noted.size);
    return root;
}

FileHandle find_boot_volume() {
    // The image's device may have gone with the stick:
    // only handles that the firmware has just named are used.
    const uefi::Handle device = image_device();
    for (const uefi::Handle handle : HandleList(uefi::simple_file_system_guid)) {
        if (noted.size == 0 ? handle != device : !is_noted_volume(handle)) continue;
        FileHandle root = open_root(handle);
        if (IsDirectory(root.get())) return root;
    }
    return {};
}

}  // namespace korvane
