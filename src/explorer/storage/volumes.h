#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "files/file_handle.h"
#include "platform/handle_list.h"
#include "platform/uefi.h"

namespace korvane {

// Walks the volumes of the machine: the handles with a Simple File System whose volume opens, numbered from
// 0 in the firmware's order of handles. Unlike the language's file statements, which see only the
// interpreter's own volume, the explorer reaches them all.
class VolumeWalk {
  public:
    VolumeWalk();

    // Opens the next volume; false when there is none left.
    bool next();

    std::uint64_t number() const { return number_; }
    uefi::Handle handle() const { return handle_; }
    uefi::FileProtocol* root() const { return root_.get(); }

    // Gives the open root directory to the caller.
    FileHandle take_root() { return std::move(root_); }

  private:
    HandleList handles_;
    const uefi::Handle* upcoming_;
    uefi::Handle handle_ = nullptr;
    FileHandle root_;
    std::uint64_t opened_ = 0;  // volumes so far
    std::uint64_t number_ = 0;  // of the current one
};

// The root directory of a volume; empty when there is no such volume.
FileHandle open_volume(std::uint64_t number);

// Opens a path (absolute or not, "/" or "\" between its names) on a volume for reading.
// Empty when that fails.
FileHandle open_on_volume(uefi::FileProtocol* root, std::string_view path);

enum class PathKind : std::uint8_t { file, directory };

// True when the path exists on the volume and is of that kind.
bool path_exists(uefi::FileProtocol* root, std::string_view path, PathKind kind);

}  // namespace korvane
