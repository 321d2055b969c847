#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "explorer/storage/partition_table.h"

namespace korvane {
namespace {

template <typename Number>
void put(std::uint8_t* at, Number value) {
    std::memcpy(at, &value, sizeof value);
}

using Header = std::array<std::uint8_t, gpt_header_bytes>;
using Sector = std::array<std::uint8_t, mbr_bytes>;

Header header(std::uint64_t lba, std::uint32_t entries, std::uint32_t size) {
    Header bytes{};
    std::memcpy(bytes.data(), "EFI PART", 8);
    put(bytes.data() + 72, lba);
    put(bytes.data() + 80, entries);
    put(bytes.data() + 84, size);
    return bytes;
}

TEST(GptHeader, FieldsAreReadFromTheirPlaces) {
    const auto decoded = decode_gpt_header(header(0x0102030405060708, 128, 256));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->entry_lba, 0x0102030405060708u);
    EXPECT_EQ(decoded->entries, 128u);
    EXPECT_EQ(decoded->entry_size, 256u);
}

TEST(GptHeader, SignatureIsNeeded) {
    Header bytes = header(2, 128, 128);
    bytes[7] = 't';
    EXPECT_FALSE(decode_gpt_header(bytes));
}

TEST(GptHeader, EntrySizesOf128To4096AndUpTo4096EntriesAreReasonable) {
    EXPECT_TRUE(decode_gpt_header(header(2, 4096, 128))->is_reasonable());
    EXPECT_TRUE(decode_gpt_header(header(2, 0, 4096))->is_reasonable());
    EXPECT_FALSE(decode_gpt_header(header(2, 128, 64))->is_reasonable());
    EXPECT_FALSE(decode_gpt_header(header(2, 128, 127))->is_reasonable());
    EXPECT_FALSE(decode_gpt_header(header(2, 128, 4097))->is_reasonable());
    EXPECT_FALSE(decode_gpt_header(header(2, 4097, 128))->is_reasonable());
    EXPECT_FALSE(decode_gpt_header(header(2, 0xFFFFFFFF, 0xFFFFFFFF))->is_reasonable());
}

std::vector<std::uint8_t> entry(const std::vector<std::uint8_t>& type, std::uint64_t first,
                                std::uint64_t last, const std::u16string& name) {
    std::vector<std::uint8_t> bytes(128, 0);
    std::memcpy(bytes.data(), type.data(), 16);
    put(bytes.data() + 32, first);
    put(bytes.data() + 40, last);
    std::memcpy(bytes.data() + 56, name.data(), name.size() * 2);
    return bytes;
}

// The types as they stand on a disk: the first three fields little-endian.
const std::vector<std::uint8_t> efi_system = {0x28, 0x73, 0x2A, 0xC1, 0x1F, 0xF8, 0xD2, 0x11,
                                              0xBA, 0x4B, 0x00, 0xA0, 0xC9, 0x3E, 0xC9, 0x3B};
const std::vector<std::uint8_t> microsoft_reserved = {0x16, 0xE3, 0xC9, 0xE3, 0x5C, 0x0B, 0xB8, 0x4D,
                                                      0x81, 0x7D, 0xF9, 0x2D, 0xF0, 0x02, 0x15, 0xAE};
const std::vector<std::uint8_t> basic_data = {0xA2, 0xA0, 0xD0, 0xEB, 0xE5, 0xB9, 0x33, 0x44,
                                              0x87, 0xC0, 0x68, 0xB6, 0xB7, 0x26, 0x99, 0xC7};
const std::vector<std::uint8_t> windows_recovery = {0xA4, 0xBB, 0x94, 0xDE, 0xD1, 0x06, 0x40, 0x4D,
                                                    0xA1, 0x6A, 0xBF, 0xD5, 0x01, 0x79, 0xD6, 0xAC};
const std::vector<std::uint8_t> linux_filesystem = {0xAF, 0x3D, 0xC6, 0x0F, 0x83, 0x84, 0x72, 0x47,
                                                    0x8E, 0x79, 0x3D, 0x69, 0xD8, 0x47, 0x7D, 0xE4};
const std::vector<std::uint8_t> linux_swap = {0x6D, 0xFD, 0x57, 0x06, 0xAB, 0xA4, 0xC4, 0x43,
                                              0x84, 0xE5, 0x09, 0x33, 0xC8, 0x4B, 0x4F, 0x4F};
const std::vector<std::uint8_t> other_type(16, 0x5A);

std::string shown(std::uint64_t number, const std::vector<std::uint8_t>& bytes,
                  std::uint32_t block_size = 512) {
    const auto decoded = decode_gpt_entry(bytes);
    return decoded ? std::string(format_gpt_entry(number, *decoded, block_size).view()) : "(unused)";
}

TEST(GptEntry, LineShowsTypeNameRangeAndSize) {
    EXPECT_EQ(shown(1, entry(efi_system, 2048, 206847, u"EFI system partition")),
              "  1  EFI System  \"EFI system partition\"  LBA 2048-206847  100 MiB");
}

TEST(GptEntry, KnownTypesHaveNames) {
    const std::pair<std::vector<std::uint8_t>, std::string> types[] = {
        {microsoft_reserved, "Microsoft Reserved"},
        {basic_data, "Basic Data"},
        {windows_recovery, "Windows Recovery"},
        {linux_filesystem, "Linux filesystem"},
        {linux_swap, "Linux swap"},
        {other_type, "GPT"}};
    for (const auto& [type, name] : types)
        EXPECT_EQ(shown(7, entry(type, 1, 1, u"")), "  7  " + name + "  \"\"  LBA 1-1  0 MiB");
}

TEST(GptEntry, UnusedEntryHasAZeroType) {
    EXPECT_EQ(shown(1, entry(std::vector<std::uint8_t>(16, 0), 1, 2, u"x")), "(unused)");
    std::vector<std::uint8_t> last_byte(16, 0);
    last_byte[15] = 1;
    EXPECT_NE(shown(1, entry(last_byte, 1, 2, u"x")), "(unused)");
}

TEST(GptEntry, NameMayFillItsField) {
    EXPECT_EQ(shown(1, entry(other_type, 0, 0, std::u16string(36, u'n'))),
              "  1  GPT  \"" + std::string(36, 'n') + "\"  LBA 0-0  0 MiB");
}

TEST(GptEntry, SizeIsLeftOutWhenTheRangeIsReversedOrOverflows) {
    EXPECT_EQ(shown(1, entry(other_type, 5, 4, u"")), "  1  GPT  \"\"  LBA 5-4");
    EXPECT_EQ(shown(1, entry(other_type, 0, 0xFFFFFFFFFFFFFFFF, u"")),
              "  1  GPT  \"\"  LBA 0-18446744073709551615");
    // 2^55 blocks of 512 bytes are 2^64 bytes; one block less is still counted: 2^44 MiB less a part.
    EXPECT_EQ(shown(1, entry(other_type, 0, (std::uint64_t{1} << 55) - 1, u"")),
              "  1  GPT  \"\"  LBA 0-36028797018963967");
    EXPECT_EQ(shown(1, entry(other_type, 1, (std::uint64_t{1} << 55) - 1, u"")),
              "  1  GPT  \"\"  LBA 1-36028797018963967  17592186044415 MiB");
}

TEST(GptEntry, SizeCountsTheBlockSize) {
    EXPECT_EQ(shown(2, entry(other_type, 256, 511, u""), 4096), "  2  GPT  \"\"  LBA 256-511  1 MiB");
}

Sector mbr(unsigned index, std::uint8_t type, std::uint32_t first, std::uint32_t count) {
    Sector sector{};
    std::uint8_t* record = sector.data() + 446 + 16 * index;
    record[4] = type;
    put(record + 8, first);
    put(record + 12, count);
    return sector;
}

TEST(Mbr, SignatureIsInTheLastTwoBytes) {
    Sector sector{};
    EXPECT_FALSE(has_mbr_signature(sector));
    sector[510] = 0x55;
    EXPECT_FALSE(has_mbr_signature(sector));
    sector[511] = 0xAA;
    EXPECT_TRUE(has_mbr_signature(sector));
}

TEST(Mbr, EntryShowsTypeRangeAndSize) {
    for (unsigned index = 0; index < 4; ++index) {
        const auto decoded = decode_mbr_entry(mbr(index, 0x0C, 2048, 204800), index);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(format_mbr_entry(index + 1, *decoded, 512).view(),
                  "  " + std::to_string(index + 1) + "  MBR type 0C  LBA 2048-206847  100 MiB");
    }
}

TEST(Mbr, UnusedEntryHasNoTypeOrNoBlocks) {
    EXPECT_FALSE(decode_mbr_entry(mbr(0, 0, 1, 1), 0));
    EXPECT_FALSE(decode_mbr_entry(mbr(0, 0x83, 1, 0), 0));
}

TEST(Mbr, LargestEntryDoesNotWrap) {
    const auto decoded = decode_mbr_entry(mbr(0, 0xFF, 0xFFFFFFFF, 0xFFFFFFFF), 0);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(format_mbr_entry(1, *decoded, 0xFFFFFFFF).view(),
              "  1  MBR type FF  LBA 4294967295-8589934589  17592186036224 MiB");
}

}  // namespace
}  // namespace korvane
