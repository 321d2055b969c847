#include "system_tables.h"

#include <cstring>

namespace korvane::host {

namespace {

template <typename Number>
void put(std::uint8_t* at, Number value) {
    std::memcpy(at, &value, sizeof value);
}

void put_text(std::uint8_t* at, const char* text) {
    std::memcpy(at, text, std::strlen(text));
}

// Makes the bytes add up to zero modulo 256.
void put_checksum(std::span<std::uint8_t> bytes, std::size_t place) {
    std::uint8_t sum = 0;
    bytes[place] = 0;
    for (const std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + byte);
    bytes[place] = static_cast<std::uint8_t>(0x100 - sum);
}

// A description table that lists no other (ACPI 6.4, section 5.2.6).
void put_empty_table(std::span<std::uint8_t> table, const char* signature) {
    put_text(&table[0], signature);
    put(&table[4], static_cast<std::uint32_t>(table.size()));
    table[8] = 1;
    put_text(&table[10], "KORVAN");
    put_text(&table[16], "HOSTED  ");
    put_checksum(table, 9);
}

}  // namespace

// The layout of the root pointer is that of ACPI 6.4, section 5.2.5.3.
void* put_acpi_tables(std::span<std::uint8_t> memory) {
    constexpr std::size_t pointer_size = 36;
    constexpr std::size_t table_size = 36;
    const auto pointer = memory.subspan(0, pointer_size);
    const auto rsdt = memory.subspan(64, table_size);
    const auto xsdt = memory.subspan(128, table_size);
    put_empty_table(rsdt, "RSDT");
    put_empty_table(xsdt, "XSDT");
    put_text(&pointer[0], "RSD PTR ");
    put_text(&pointer[9], "KORVAN");
    pointer[15] = 2;
    put(&pointer[16], static_cast<std::uint32_t>(reinterpret_cast<std::uint64_t>(rsdt.data())));
    put(&pointer[20], static_cast<std::uint32_t>(pointer_size));
    put(&pointer[24], reinterpret_cast<std::uint64_t>(xsdt.data()));
    put_checksum(pointer.first(20), 8);
    put_checksum(pointer, 32);
    return pointer.data();
}

// The layouts are those of SMBIOS 3.4, sections 5.2.2 and 7.45.
void* put_smbios_table(std::span<std::uint8_t> memory) {
    constexpr std::size_t entry_size = 24;
    const auto entry = memory.subspan(0, entry_size);
    const auto end_of_table = memory.subspan(64, 6);
    put(&end_of_table[0], std::uint8_t{127});
    put(&end_of_table[1], std::uint8_t{4});
    put(&end_of_table[2], std::uint16_t{0xFEFF});
    put_text(&entry[0], "_SM3_");
    entry[6] = entry_size;
    entry[7] = 3;
    entry[8] = 4;
    entry[10] = 1;
    put(&entry[12], static_cast<std::uint32_t>(end_of_table.size()));
    put(&entry[16], reinterpret_cast<std::uint64_t>(end_of_table.data()));
    put_checksum(entry, 5);
    return entry.data();
}

}  // namespace korvane::host
