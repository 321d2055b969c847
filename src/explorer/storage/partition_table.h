#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "explorer/line_text.h"
#include "platform/uefi.h"

namespace korvane {

// Sizes and places fixed by the GPT (UEFI 2.10, section 5.3) and the legacy MBR (section 5.2.1).
inline constexpr std::size_t gpt_header_bytes = 96;  // as many as are read
inline constexpr std::size_t smallest_gpt_entry = 128;
inline constexpr std::size_t largest_gpt_entry = 4096;
inline constexpr std::uint32_t most_gpt_entries = 4096;
inline constexpr std::size_t mbr_bytes = 512;
inline constexpr unsigned mbr_entries = 4;

struct GptHeader {
    uefi::Lba entry_lba;  // first block of the entry table
    std::uint32_t entries;
    std::uint32_t entry_size;  // bytes

    // True when sizes are such that the table can be walked.
    bool is_reasonable() const {
        return entry_size >= smallest_gpt_entry && entry_size <= largest_gpt_entry &&
               entries <= most_gpt_entries;
    }
};

// Decodes the first 96 bytes of LBA 1; nothing without the signature. Neither CRC is verified and the backup
// header is never asked: the primary table is shown as it stands.
std::optional<GptHeader> decode_gpt_header(std::span<const std::uint8_t, gpt_header_bytes> bytes);

struct GptEntry {
    uefi::Guid type;
    uefi::Lba first;
    uefi::Lba last;
    std::array<char16_t, 36> name;  // ends at a zero or fills the array
};

// Decodes an entry of at least 128 bytes; nothing for an unused one, whose type is all zero.
std::optional<GptEntry> decode_gpt_entry(std::span<const std::uint8_t> bytes);

// "EFI System" and so on; "GPT" for a type that is not known here.
const char* partition_type_name(const uefi::Guid& type);

// The line that shows a GPT entry. The size is left out when the last LBA lies below
// the first or it overflows.
LineText format_gpt_entry(std::uint64_t number, const GptEntry& entry, std::uint32_t block_size);

bool has_mbr_signature(std::span<const std::uint8_t, mbr_bytes> sector);

struct MbrEntry {
    std::uint8_t type;
    std::uint32_t first;  // LBA
    std::uint32_t count;  // blocks, at least 1
};

// Decodes entry `index` (0 to 3); nothing for an unused one, whose type or count is 0.
std::optional<MbrEntry> decode_mbr_entry(std::span<const std::uint8_t, mbr_bytes> sector, unsigned index);

LineText format_mbr_entry(std::uint64_t number, const MbrEntry& entry, std::uint32_t block_size);

}  // namespace korvane
