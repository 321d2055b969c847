#include "volume.h"

#include <utility>

#include "file_services.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t simple_file_system_revision = 0x00010000;

}  // namespace

OpenFile::OpenFile(Volume& its_volume, FolderPath its_path)
    : uefi::FileProtocol(FileServices::table()), volume(its_volume), path(std::move(its_path)) {}

Volume::Volume(const VolumeConfig& config, ServiceFaults& faults, Misuse& misuse)
    : uefi::SimpleFileSystemProtocol{simple_file_system_revision, open_volume},
      folder_(config.folder),
      read_only_(config.read_only),
      size_(config.size),
      free_bytes_(config.capacity),
      label_(config.label),
      host_programs_(config.host_programs),
      faults_(faults),
      misuse_(misuse) {}

void Volume::lend(LentFile file) {
    if (!folder_.status(file.path)) lent_.push_back(std::move(file));
}

OpenFile* Volume::add_handle(FolderPath path) {
    handles_.push_back(std::make_unique<OpenFile>(*this, std::move(path)));
    return handles_.back().get();
}

std::vector<const OpenFile*> Volume::open_files() const {
    std::vector<const OpenFile*> open;
    for (const auto& handle : handles_)
        if (!handle->closed && lost_ == uefi::success) open.push_back(handle.get());
    return open;
}

uefi::Status EFIAPI Volume::open_volume(uefi::SimpleFileSystemProtocol* self, uefi::FileProtocol** root) {
    auto& volume = *static_cast<Volume*>(self);
    if (auto failure = volume.faults_.strike(Service::OpenVolume)) return *failure;
    if (volume.lost_ != uefi::success) return volume.lost_;
    if (root == nullptr) return uefi::invalid_parameter;
    OpenFile* opened = volume.add_handle({});
    opened->directory = true;
    opened->writable = !volume.read_only_;
    *root = opened;
    return uefi::success;
}

}  // namespace korvane::host
