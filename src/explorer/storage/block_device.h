#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/firmware.h"
#include "platform/uefi.h"

namespace korvane {

// A whole, present medium (not a partition's view of one). The media fields are a copy taken when the disk
// was found: should the medium change meanwhile, reads by the old media id fail instead of mixing two media.
struct Disk {
    uefi::Handle handle;
    uefi::BlockIoProtocol* device;
    uefi::BlockIoMedia media;
};

// The disk behind a handle, or nothing when it is none.
std::optional<Disk> disk_of(uefi::Handle handle);

// Disk `number`, counted from 0 over the disks in the firmware's order of handles.
std::optional<Disk> find_disk(std::uint64_t number);

// The bytes of a medium, or nothing when their number does not fit in 64 bits.
std::optional<std::uint64_t> media_bytes(const uefi::BlockIoMedia& media);

// A pool buffer at an address that suits a device's `IoAlign`.
class BlockBuffer {
  public:
    BlockBuffer(std::uint64_t bytes, std::uint32_t alignment);

    explicit operator bool() const { return static_cast<bool>(buffer_); }  // false: no memory
    std::uint8_t* data() const { return aligned_; }

  private:
    PoolBuffer buffer_;
    std::uint8_t* aligned_;
};

// Reads `count` blocks from `lba` on in one transfer. False when the device fails.
bool read_blocks(const Disk& disk, uefi::Lba lba, std::uint64_t count, std::uint8_t* buffer);

// Reads any byte range of a disk by whole blocks, one at a time; the last block read is kept.
class DiskReader {
  public:
    explicit DiskReader(const Disk& disk);

    // Fills `bytes` from a byte offset on the disk. False when a block beyond the last one would be needed,
    // the offset overflows, a block cannot be read or there was no memory for one.
    bool read(std::uint64_t offset, std::span<std::uint8_t> bytes);

  private:
    bool load_block(uefi::Lba lba);

    const Disk& disk_;
    BlockBuffer block_;
    std::optional<uefi::Lba> loaded_;  // the block that the buffer holds
};

}  // namespace korvane
