// The functions of the boot-services table.
#pragma once

#include <algorithm>
#include <cstdint>

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

// Gives a table of services its header, and `unimplemented` in the place of every service.
template <typename Table>
void begin_table(Table& table, std::uint64_t signature, uefi::Status(EFIAPI* unimplemented)()) {
    table = {};
    auto* entry = reinterpret_cast<void**>(reinterpret_cast<std::uint8_t*>(&table) + sizeof table.Hdr);
    std::fill_n(entry, (sizeof table - sizeof table.Hdr) / sizeof *entry,
                reinterpret_cast<void*>(unimplemented));
    table.Hdr = {signature, 2 << 16 | 80, sizeof table, 0, 0};
}

// Computes the checksum of a table header (UEFI 2.10, section 4.2): CRC-32 over the whole table with the
// field as zero.
void seal(uefi::TableHeader& header);

}  // namespace korvane::host
