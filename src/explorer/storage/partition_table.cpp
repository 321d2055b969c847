#include "explorer/storage/partition_table.h"

#include "platform/memory.h"

namespace korvane {
namespace {

constexpr std::string_view gpt_signature = "EFI PART";
constexpr std::size_t mbr_entry_table = 446;
constexpr std::size_t mbr_entry_bytes = 16;
constexpr std::size_t mbr_signature = 510;

struct PartitionType {
    uefi::Guid identifier;
    const char* name;
};

constexpr std::array<PartitionType, 6> partition_types = {{
    {{0xC12A7328, 0xF81F, 0x11D2, {0xBA, 0x4B, 0x00, 0xA0, 0xC9, 0x3E, 0xC9, 0x3B}}, "EFI System"},
    {{0xE3C9E316, 0x0B5C, 0x4DB8, {0x81, 0x7D, 0xF9, 0x2D, 0xF0, 0x02, 0x15, 0xAE}}, "Microsoft Reserved"},
    {{0xEBD0A0A2, 0xB9E5, 0x4433, {0x87, 0xC0, 0x68, 0xB6, 0xB7, 0x26, 0x99, 0xC7}}, "Basic Data"},
    {{0xDE94BBA4, 0x06D1, 0x4D40, {0xA1, 0x6A, 0xBF, 0xD5, 0x01, 0x79, 0xD6, 0xAC}}, "Windows Recovery"},
    {{0x0FC63DAF, 0x8483, 0x4772, {0x8E, 0x79, 0x3D, 0x69, 0xD8, 0x47, 0x7D, 0xE4}}, "Linux filesystem"},
    {{0x0657FD6D, 0xA4AB, 0x43C4, {0x84, 0xE5, 0x09, 0x33, 0xC8, 0x4B, 0x4F, 0x4F}}, "Linux swap"},
}};

// The bytes of `count` blocks from `first` to `last`, or nothing when they do not fit in 64 bits.
std::optional<std::uint64_t> partition_bytes(uefi::Lba first, uefi::Lba last, std::uint32_t block_size) {
    std::uint64_t blocks = 0;
    std::uint64_t bytes = 0;
    if (last < first || __builtin_add_overflow(last - first, std::uint64_t{1}, &blocks)) return std::nullopt;
    if (__builtin_mul_overflow(blocks, std::uint64_t{block_size}, &bytes)) return std::nullopt;
    return bytes;
}

}  // namespace

std::optional<GptHeader> decode_gpt_header(std::span<const std::uint8_t, gpt_header_bytes> bytes) {
    if (compare_bytes(bytes.data(), gpt_signature.data(), gpt_signature.size()) != 0) return std::nullopt;
    return GptHeader{read_unaligned<std::uint64_t>(bytes.data() + 72),
                     read_unaligned<std::uint32_t>(bytes.data() + 80),
                     read_unaligned<std::uint32_t>(bytes.data() + 84)};
}

std::optional<GptEntry> decode_gpt_entry(std::span<const std::uint8_t> bytes) {
    GptEntry entry{};
    entry.type = read_unaligned<uefi::Guid>(bytes.data());
    if (entry.type == uefi::Guid{}) return std::nullopt;
    entry.first = read_unaligned<std::uint64_t>(bytes.data() + 32);
    entry.last = read_unaligned<std::uint64_t>(bytes.data() + 40);
    copy_bytes(entry.name.data(), bytes.data() + 56, sizeof entry.name);
    return entry;
}

const char* partition_type_name(const uefi::Guid& type) {
    for (const PartitionType& known : partition_types)
        if (known.identifier == type) return known.name;
    return "GPT";
}

LineText format_gpt_entry(std::uint64_t number, const GptEntry& entry, std::uint32_t block_size) {
    LineText line;
    line.put("  ").put_decimal(number).put("  ").put(partition_type_name(entry.type)).put("  \"");
    for (const char16_t unit : entry.name) {
        if (unit == 0) break;
        line.put_utf16(unit);
    }
    line.put("\"  LBA ").put_decimal(entry.first).put('-').put_decimal(entry.last);
    if (const auto bytes = partition_bytes(entry.first, entry.last, block_size))
        line.put("  ").put_decimal(*bytes >> 20).put(" MiB");
    return line;
}

bool has_mbr_signature(std::span<const std::uint8_t, mbr_bytes> sector) {
    return sector[mbr_signature] == 0x55 && sector[mbr_signature + 1] == 0xAA;
}

std::optional<MbrEntry> decode_mbr_entry(std::span<const std::uint8_t, mbr_bytes> sector, unsigned index) {
    const std::uint8_t* record = sector.data() + mbr_entry_table + index * mbr_entry_bytes;
    const MbrEntry entry{record[4], read_unaligned<std::uint32_t>(record + 8),
                         read_unaligned<std::uint32_t>(record + 12)};
    if (entry.type == 0 || entry.count == 0) return std::nullopt;
    return entry;
}

LineText format_mbr_entry(std::uint64_t number, const MbrEntry& entry, std::uint32_t block_size) {
    LineText line;
    line.put("  ").put_decimal(number).put("  MBR type ").put_hex(entry.type, 2);
    // In 64 bits, where neither the last block number nor the product can wrap.
    line.put("  LBA ")
        .put_decimal(entry.first)
        .put('-')
        .put_decimal(std::uint64_t{entry.first} + entry.count - 1);
    line.put("  ").put_decimal(std::uint64_t{block_size} * entry.count >> 20).put(" MiB");
    return line;
}

}  // namespace korvane
