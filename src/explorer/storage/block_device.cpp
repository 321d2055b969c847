#include "explorer/storage/block_device.h"

#include <algorithm>

#include "platform/handle_list.h"
#include "platform/memory.h"

namespace korvane {
namespace {

// What to allocate so that `bytes` bytes fit at an aligned address within it.
std::uint64_t bytes_with_slack(std::uint64_t bytes, std::uint32_t alignment) {
    return alignment > 1 ? bytes + (alignment - 1) : bytes;
}

}  // namespace

std::optional<Disk> disk_of(uefi::Handle handle) {
    auto* device = static_cast<uefi::BlockIoProtocol*>(find_interface(handle, uefi::block_io_guid));
    if (device == nullptr || device->Media == nullptr) return std::nullopt;
    const uefi::BlockIoMedia media = *device->Media;
    if (media.MediaPresent == 0 || media.LogicalPartition != 0) return std::nullopt;
    return Disk{handle, device, media};
}

std::optional<Disk> find_disk(std::uint64_t number) {
    const HandleList handles(uefi::block_io_guid);
    for (const uefi::Handle handle : handles) {
        const auto disk = disk_of(handle);
        if (disk && number-- == 0) return disk;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> media_bytes(const uefi::BlockIoMedia& media) {
    std::uint64_t blocks = 0;
    std::uint64_t bytes = 0;
    if (__builtin_add_overflow(media.LastBlock, std::uint64_t{1}, &blocks)) return std::nullopt;
    if (__builtin_mul_overflow(blocks, std::uint64_t{media.BlockSize}, &bytes)) return std::nullopt;
    return bytes;
}

BlockBuffer::BlockBuffer(std::uint64_t bytes, std::uint32_t alignment)
    : buffer_(bytes_with_slack(bytes, alignment)), aligned_(buffer_.data()) {
    if (alignment <= 1 || !buffer_) return;
    // By remainder, so that a device that asks for no power of two gets what it asks for.
    const std::uint64_t past = reinterpret_cast<std::uint64_t>(aligned_) % alignment;
    if (past != 0) aligned_ += alignment - past;
}

bool read_blocks(const Disk& disk, uefi::Lba lba, std::uint64_t count, std::uint8_t* buffer) {
    const std::uint64_t bytes = count * disk.media.BlockSize;
    return !uefi::is_error(disk.device->ReadBlocks(disk.device, disk.media.MediaId, lba, bytes, buffer));
}

DiskReader::DiskReader(const Disk& disk)
    : disk_(disk), block_(std::max<std::uint64_t>(disk.media.BlockSize, 1), disk.media.IoAlign) {}

bool DiskReader::load_block(uefi::Lba lba) {
    if (loaded_ == lba) return true;
    if (lba > disk_.media.LastBlock) return false;
    loaded_.reset();
    if (!read_blocks(disk_, lba, 1, block_.data())) return false;
    loaded_ = lba;
    return true;
}

bool DiskReader::read(std::uint64_t offset, std::span<std::uint8_t> bytes) {
    const std::uint64_t block_size = disk_.media.BlockSize;
    if (!block_ || block_size == 0) return false;
    while (!bytes.empty()) {
        const std::uint64_t within = offset % block_size;
        if (!load_block(offset / block_size)) return false;
        const auto piece = std::min<std::uint64_t>(block_size - within, bytes.size());
        copy_bytes(bytes.data(), block_.data() + within, piece);
        bytes = bytes.subspan(piece);
        if (__builtin_add_overflow(offset, piece, &offset) && !bytes.empty()) return false;
    }
    return true;
}

}  // namespace korvane
