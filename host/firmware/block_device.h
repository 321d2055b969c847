// The block I/O protocol over a raw image file.
#pragma once

#include <cstdint>
#include <vector>

#include "config.h"
#include "folder.h"
#include "misuse.h"
#include "platform/uefi.h"
#include "service_faults.h"

namespace korvane::host {

class BlockDevice : public uefi::BlockIoProtocol {
  public:
    // Ends the program with a message when the image file cannot be opened. A last block that the file holds
    // only in part reads as if it went on with zeros.
    BlockDevice(const BlockDeviceConfig& config, ServiceFaults& faults, Misuse& misuse);

  private:
    static uefi::Status EFIAPI reset(uefi::BlockIoProtocol* self, std::uint8_t extended_verification);
    static uefi::Status EFIAPI read_blocks(uefi::BlockIoProtocol* self, std::uint32_t media_id, uefi::Lba lba,
                                           std::uint64_t size, void* buffer);
    static uefi::Status EFIAPI write_blocks(uefi::BlockIoProtocol* self, std::uint32_t media_id,
                                            uefi::Lba lba, std::uint64_t size, const void* buffer);
    static uefi::Status EFIAPI flush_blocks(uefi::BlockIoProtocol* self);

    uefi::Status check(std::uint32_t media_id, uefi::Lba lba, std::uint64_t size, const void* buffer) const;

    Descriptor file_;
    uefi::BlockIoMedia media_{};
    std::vector<std::uint64_t> unreadable_;
    ServiceFaults& faults_;
    Misuse& misuse_;
};

}  // namespace korvane::host
