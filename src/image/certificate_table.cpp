#include "image/certificate_table.h"

#include "files/file_handle.h"
#include "platform/memory.h"

namespace korvane {

namespace {

// Offsets of the PE format (Microsoft PE and COFF specification, sections 2 and 3).
constexpr std::uint64_t dos_header_size = 64;
constexpr std::uint64_t pe_header_pointer = 0x3C;
constexpr std::uint64_t optional_header = 24;  // behind the signature "PE\0\0" and the file header
constexpr std::uint64_t directory_count = optional_header + 108;
constexpr std::uint64_t certificate_directory = optional_header + 144;
constexpr std::uint64_t pe_header_size = certificate_directory + 8;  // the part that is looked at
constexpr std::uint16_t pe32_plus_magic = 0x20B;
constexpr std::uint32_t pe_signature = 0x00004550;
constexpr std::uint16_t dos_signature = 0x5A4D;
constexpr std::uint32_t certificate_index = 4;

bool read_at(const FileHandle& file, std::uint64_t position, std::uint8_t* bytes, std::uint64_t size) {
    return file.set_position(position) && file.read_exactly(bytes, size);
}

}  // namespace

std::uint64_t find_certificate_table(const FileHandle& image, std::uint64_t size) {
    std::uint8_t dos_header[dos_header_size];
    if (!read_at(image, 0, dos_header, dos_header_size)) return size;
    if (read_unaligned<std::uint16_t>(dos_header) != dos_signature) return size;

    std::uint8_t header[pe_header_size];
    const auto position = read_unaligned<std::uint32_t>(dos_header + pe_header_pointer);
    if (!read_at(image, position, header, pe_header_size)) return size;
    if (read_unaligned<std::uint32_t>(header) != pe_signature) return size;
    if (read_unaligned<std::uint16_t>(header + optional_header) != pe32_plus_magic) return size;
    if (read_unaligned<std::uint32_t>(header + directory_count) <= certificate_index) return size;

    // Unlike the other directories this one holds a file offset,
    // and its table is the last thing in a signed file.
    const auto table = read_unaligned<std::uint32_t>(header + certificate_directory);
    const auto table_size = read_unaligned<std::uint32_t>(header + certificate_directory + 4);
    const bool is_last = table != 0 && table_size != 0 && std::uint64_t{table} + table_size == size;
    return is_last ? table : size;
}

}  // namespace korvane
