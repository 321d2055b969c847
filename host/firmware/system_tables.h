// The tables that firmware leaves in memory: ACPI and SMBIOS.
#pragma once

#include <cstdint>
#include <span>

namespace korvane::host {

// Writes an ACPI 2.0 root pointer with an empty XSDT and RSDT; returns the root pointer's address.
void* put_acpi_tables(std::span<std::uint8_t> memory);

// Writes a 64-bit SMBIOS entry point with an end-of-table structure; returns the entry point's address.
void* put_smbios_table(std::span<std::uint8_t> memory);

}  // namespace korvane::host
