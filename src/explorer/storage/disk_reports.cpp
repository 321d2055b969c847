#include "explorer/storage/disk_reports.h"

#include <algorithm>

#include "explorer/hex_line.h"
#include "explorer/number_syntax.h"
#include "explorer/report.h"
#include "explorer/storage/block_device.h"
#include "explorer/storage/device_path_text.h"
#include "platform/handle_list.h"

namespace korvane {
namespace {

constexpr std::uint64_t most_sectors = 64;
constexpr std::uint64_t most_sector_bytes = 1048576;
constexpr std::size_t label_column = 2;

void put_size(LineText& line, const uefi::BlockIoMedia& media, unsigned width) {
    if (const auto bytes = media_bytes(media))
        line.put_decimal(*bytes >> 20, width).put(" MiB");
    else
        line.put("size unknown");
}

// "Disk 0     61440 MiB  block=512   last LBA=125829119  fixed  read/write"
LineText disk_line(std::uint64_t number, const uefi::BlockIoMedia& media) {
    LineText line;
    line.put("Disk ").put_decimal(number).tab_to(8);
    put_size(line, media, 9);
    line.tab_to(23).put("block=").put_decimal(media.BlockSize);
    line.tab_to(36).put("last LBA=").put_decimal(media.LastBlock);
    line.tab_to(57).put(media.RemovableMedia != 0 ? "removable" : "fixed");
    line.tab_to(68).put(media.ReadOnly != 0 ? "read-only" : "read/write");
    return line;
}

void print_disk(std::uint64_t number, const Disk& disk) {
    const uefi::BlockIoMedia& media = disk.media;
    PagedReport listing;
    LineText heading;
    heading.put("Disk ").put_decimal(number).put("  ");
    put_size(heading, media, 0);
    listing.line(heading);
    LineText geometry;
    geometry.put("  block=").put_decimal(media.BlockSize);
    geometry.put("  last LBA=").put_decimal(media.LastBlock);
    geometry.put("  bytes=");
    if (const auto bytes = media_bytes(media))
        geometry.put_decimal(*bytes);
    else
        geometry.put("unknown");
    listing.line(geometry);
    LineText medium;
    medium.put(media.RemovableMedia != 0 ? "  removable" : "  fixed");
    medium.put(media.ReadOnly != 0 ? "  read-only" : "  read/write");
    medium.put("  media id=").put_decimal(media.MediaId);
    medium.put("  I/O alignment=").put_decimal(media.IoAlign);
    listing.line(medium);
    list_device_path(listing, disk.handle, label_column);
}

void dump_blocks(std::span<const std::uint8_t> bytes, std::uint64_t disk_offset) {
    LinePager pager(finding_page());
    for (std::uint64_t i = 0; i < bytes.size(); i += hex_line_bytes) {
        HexLine line{.address = disk_offset + i};
        line.take(bytes.subspan(i));
        pager.before_line();
        print_line(format_hex_line(line));
    }
}

void read_and_dump(const Disk& disk, uefi::Lba lba, std::uint64_t count) {
    const uefi::BlockIoMedia& media = disk.media;
    if (media.BlockSize == 0 || lba > media.LastBlock || count - 1 > media.LastBlock - lba) {
        print_line("LBA outside media.");
        return;
    }
    const std::uint64_t bytes = count * media.BlockSize;  // at most 64 times 2^32
    if (bytes > most_sector_bytes) {
        print_line("Read too large.");
        return;
    }
    std::uint64_t disk_offset = 0;
    if (__builtin_mul_overflow(lba, std::uint64_t{media.BlockSize}, &disk_offset)) {
        print_line("Byte offset overflow.");
        return;
    }
    const BlockBuffer buffer(bytes, media.IoAlign);
    if (!buffer)
        print_line("Out of memory.");
    else if (!read_blocks(disk, lba, count, buffer.data()))
        print_line("Block read failed.");
    else
        dump_blocks({buffer.data(), bytes}, disk_offset);
}

}  // namespace

CommandEnd do_disks(WordReader&) {
    const HandleList handles(uefi::block_io_guid);
    PagedReport listing;
    std::uint64_t number = 0;
    for (const uefi::Handle handle : handles) {
        const auto disk = disk_of(handle);
        if (disk && !listing.line(disk_line(number++, disk->media))) return CommandEnd::done;
    }
    if (number == 0) print_line("No whole-media Block I/O devices found.");
    return CommandEnd::done;
}

CommandEnd do_disk(WordReader& arguments) {
    std::uint64_t number = 0;
    if (!read_numbers(arguments, {&number})) return CommandEnd::bad_arguments;
    if (const auto disk = find_disk(number))
        print_disk(number, *disk);
    else
        print_line(disk_not_found);
    return CommandEnd::done;
}

CommandEnd do_sector(WordReader& arguments) {
    std::uint64_t number = 0;
    uefi::Lba lba = 0;
    if (!read_numbers(arguments, {&number, &lba})) return CommandEnd::bad_arguments;
    std::uint64_t count = 0;
    if (const Word word = arguments.next(); !word.empty()) {
        const auto given = parse_number(word.view());
        if (!given) {
            print_line("Bad count.");
            return CommandEnd::done;
        }
        count = *given;
    }
    if (count == 0) count = 1;
    if (count > most_sectors) {
        print_line("Sector read limited to 64 blocks.");
        count = most_sectors;
    }
    if (const auto disk = find_disk(number))
        read_and_dump(*disk, lba, count);
    else
        print_line(disk_not_found);
    return CommandEnd::done;
}

}  // namespace korvane
