// The functions of the boot-services table.
#pragma once

#include "firmware.h"
#include "platform/uefi.h"

namespace korvane::host {

struct BootServiceFunctions {
    // The functions act on this firmware from now on.
    static void fill(uefi::BootServices& table, Firmware& firmware);

    // Of the CPU architectural protocol: accepts whole pages.
    static uefi::Status EFIAPI set_memory_attributes(uefi::CpuArchProtocol* self, uefi::PhysicalAddress base,
                                                     std::uint64_t length, std::uint64_t attributes);

    // The memory attribute protocol of the same firmware.
    static void fill(uefi::MemoryAttributeProtocol& protocol);
};

// Computes the checksum of a table header (UEFI 2.10, section 4.2): CRC-32 over the whole table with the
// field as zero.
void seal(uefi::TableHeader& header);

}  // namespace korvane::host
