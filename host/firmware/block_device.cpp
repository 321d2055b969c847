#include "block_device.h"

#include <algorithm>
#include <cstring>

#include "give_up.h"

namespace korvane::host {

namespace {

constexpr std::uint64_t block_io_revision = 0x00010000;

}  // namespace

BlockDevice::BlockDevice(const BlockDeviceConfig& config, ServiceFaults& faults, Misuse& misuse)
    : uefi::BlockIoProtocol{block_io_revision, nullptr, reset, read_blocks, write_blocks, flush_blocks},
      file_(open_host_file(config.image, false)),
      unreadable_(config.unreadable_blocks),
      faults_(faults),
      misuse_(misuse) {
    const auto status = file_ ? file_.status() : std::nullopt;
    if (!status) give_up("cannot open the disk image " + config.image);
    media_.MediaId = config.media_id;
    media_.RemovableMedia = config.removable ? 1 : 0;
    media_.MediaPresent = config.media_present ? 1 : 0;
    media_.LogicalPartition = config.logical_partition ? 1 : 0;
    media_.ReadOnly = config.read_only ? 1 : 0;
    media_.BlockSize = config.block_size;
    media_.IoAlign = config.io_align;
    const std::uint64_t size = status->size;
    // A block size of 0 is wrong, and what such firmware says is for the image to cope with.
    const std::uint64_t blocks =
        config.block_size == 0 ? 1 : (size + config.block_size - 1) / config.block_size;
    media_.LastBlock = config.last_block.value_or(blocks == 0 ? 0 : blocks - 1);
    Media = &media_;
}

uefi::Status EFIAPI BlockDevice::reset(uefi::BlockIoProtocol*, std::uint8_t) {
    return uefi::success;
}

uefi::Status BlockDevice::check(std::uint32_t media_id, uefi::Lba lba, std::uint64_t size,
                                const void* buffer) const {
    if (media_.MediaPresent == 0) return uefi::no_media;
    if (media_id != media_.MediaId) return uefi::media_changed;
    if (media_.BlockSize == 0) return uefi::device_error;
    if (size % media_.BlockSize != 0) return uefi::bad_buffer_size;
    const std::uint64_t blocks = size / media_.BlockSize;
    if (blocks != 0 && (lba > media_.LastBlock || blocks - 1 > media_.LastBlock - lba))
        return uefi::invalid_parameter;
    if (buffer == nullptr && size != 0) return uefi::invalid_parameter;
    const std::uint64_t align = std::max(media_.IoAlign, 1U);
    if (reinterpret_cast<std::uint64_t>(buffer) % align != 0) return uefi::invalid_parameter;
    return uefi::success;
}

uefi::Status EFIAPI BlockDevice::read_blocks(uefi::BlockIoProtocol* self, std::uint32_t media_id,
                                             uefi::Lba lba, std::uint64_t size, void* buffer) {
    auto& device = *static_cast<BlockDevice*>(self);
    if (auto failure = device.faults_.strike(Service::ReadBlocks)) return *failure;
    const uefi::Status checked = device.check(media_id, lba, size, buffer);
    if (checked == uefi::invalid_parameter || checked == uefi::bad_buffer_size)
        device.misuse_.report("ReadBlocks outside the media, or with a wrong size or alignment");
    if (checked != uefi::success) return checked;
    const std::uint64_t blocks = size / device.media_.BlockSize;
    for (const std::uint64_t bad : device.unreadable_)
        if (bad - lba < blocks) return uefi::device_error;
    std::memset(buffer, 0, size);
    const auto count = device.file_.read(buffer, size, lba * device.media_.BlockSize);
    return count ? uefi::success : uefi::device_error;
}

// Nothing may ever write to a disk.
uefi::Status EFIAPI BlockDevice::write_blocks(uefi::BlockIoProtocol* self, std::uint32_t, uefi::Lba,
                                              std::uint64_t, const void*) {
    static_cast<BlockDevice*>(self)->misuse_.report("WriteBlocks was called");
    return uefi::write_protected;
}

uefi::Status EFIAPI BlockDevice::flush_blocks(uefi::BlockIoProtocol*) {
    return uefi::success;
}

}  // namespace korvane::host
