#include "explorer/storage/volumes.h"

#include "files/boot_volume.h"
#include "files/file_handle.h"
#include "files/firmware_name.h"
#include "platform/firmware.h"

namespace korvane {

VolumeWalk::VolumeWalk() : handles_(uefi::simple_file_system_guid), upcoming_(handles_.begin()) {}

bool VolumeWalk::next() {
    while (upcoming_ != handles_.end()) {
        handle_ = *upcoming_++;
        root_ = open_root(handle_);
        if (!root_) continue;
        number_ = opened_++;
        return true;
    }
    return false;
}

FileHandle open_volume(std::uint64_t number) {
    VolumeWalk walk;
    while (walk.next())
        if (walk.number() == number) return walk.take_root();
    return {};
}

FileHandle open_on_volume(uefi::FileProtocol* root, std::string_view path) {
    // The name's room of 255 characters is more than a command line can hold.
    const FirmwareName name(path);
    return open_below(root, name.text, uefi::file_mode_read);
}

bool path_exists(uefi::FileProtocol* root, std::string_view path, PathKind kind) {
    const FileHandle object = open_on_volume(root, path);
    const auto attributes = file_attributes(object.get());
    if (!attributes) return false;
    const bool is_directory = (*attributes & uefi::file_directory) != 0;
    return is_directory == (kind == PathKind::directory);
}

}  // namespace korvane
