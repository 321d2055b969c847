#include "explorer/storage/partitions.h"

#include <array>

#include "explorer/report.h"
#include "explorer/storage/block_device.h"
#include "explorer/storage/disk_reports.h"
#include "explorer/storage/partition_table.h"

namespace korvane {
namespace {

// What to show of a table: one entry, or all.
struct Selection {
    std::optional<std::uint64_t> number;  // counted from 1

    bool includes(std::uint64_t entry) const { return !number || *number == entry; }
};

// The lines of a table, printed with pauses; knows whether any was shown.
class PartitionList {
  public:
    explicit PartitionList(Selection selection) : selection_(selection) {}

    bool wants(std::uint64_t number) const { return selection_.includes(number); }

    bool show(const LineText& line) {
        shown_ = true;
        return listing_.line(line);
    }

    void note(std::string_view text) { listing_.line(text); }

    void finish() {
        if (!shown_) print_line(selection_.number ? "Partition not found." : "(no partitions)");
    }

  private:
    Selection selection_;
    PagedReport listing_;
    bool shown_ = false;
};

// Walks the entry table until its end, a read that fails or a place that 64 bits cannot hold.
void list_gpt_entries(DiskReader& reader, const GptHeader& header, std::uint32_t block_size,
                      std::span<std::uint8_t> entry_bytes, PartitionList& list) {
    std::uint64_t table = 0;
    if (__builtin_mul_overflow(header.entry_lba, std::uint64_t{block_size}, &table)) return;
    for (std::uint64_t i = 0; i < header.entries; ++i) {
        std::uint64_t place = 0;
        if (__builtin_add_overflow(table, i * header.entry_size, &place)) return;
        if (!reader.read(place, entry_bytes)) return;
        if (!list.wants(i + 1)) continue;
        const auto entry = decode_gpt_entry(entry_bytes);
        if (entry && !list.show(format_gpt_entry(i + 1, *entry, block_size))) return;
    }
}

void print_gpt(DiskReader& reader, const GptHeader& header, std::uint32_t block_size, PartitionList& list) {
    if (!header.is_reasonable()) {
        print_line("GPT entry table parameters are unreasonable.");
        return;
    }
    const PoolBuffer entry(header.entry_size);
    if (!entry) {
        print_line("Out of memory.");
        return;
    }
    list_gpt_entries(reader, header, block_size, {entry.data(), header.entry_size}, list);
    list.finish();
}

void print_mbr(std::span<const std::uint8_t, mbr_bytes> sector, std::uint32_t block_size,
               PartitionList& list) {
    // Shown for inspection even when the signature is wrong, deliberately.
    if (!has_mbr_signature(sector)) list.note("  no valid MBR signature");
    for (unsigned i = 0; i < mbr_entries; ++i) {
        const auto entry = decode_mbr_entry(sector, i);
        if (entry && list.wants(i + 1)) list.show(format_mbr_entry(i + 1, *entry, block_size));
    }
    list.finish();
}

void print_partitions(std::uint64_t number, Selection selection) {
    const auto disk = find_disk(number);
    if (!disk) {
        print_line(disk_not_found);
        return;
    }
    const std::uint32_t block_size = disk->media.BlockSize;
    if (block_size < mbr_bytes) {
        print_line("Unsupported block size.");
        return;
    }
    DiskReader reader(*disk);
    std::array<std::uint8_t, mbr_bytes> sector{};
    if (!reader.read(0, sector)) {
        print_line("Cannot read partition table.");
        return;
    }
    std::array<std::uint8_t, gpt_header_bytes> header_bytes{};
    std::optional<GptHeader> header;
    if (reader.read(block_size, header_bytes)) header = decode_gpt_header(header_bytes);

    PartitionList list(selection);
    list.note(LineText().put("Disk ").put_decimal(number).put(header ? "  GPT" : "  MBR").view());
    if (header)
        print_gpt(reader, *header, block_size, list);
    else
        print_mbr(sector, block_size, list);
}

}  // namespace

CommandEnd do_partitions(WordReader& arguments) {
    std::uint64_t disk = 0;
    if (!read_numbers(arguments, {&disk})) return CommandEnd::bad_arguments;
    print_partitions(disk, {});
    return CommandEnd::done;
}

CommandEnd do_partition(WordReader& arguments) {
    std::uint64_t disk = 0;
    std::uint64_t partition = 0;
    if (!read_numbers(arguments, {&disk, &partition})) return CommandEnd::bad_arguments;
    print_partitions(disk, {partition});
    return CommandEnd::done;
}

}  // namespace korvane
