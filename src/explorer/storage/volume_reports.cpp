#include "explorer/storage/volume_reports.h"

#include <algorithm>
#include <array>
#include <span>

#include "explorer/report.h"
#include "explorer/storage/device_path_text.h"
#include "explorer/storage/volumes.h"
#include "files/directory_record.h"
#include "files/file_handle.h"
#include "platform/firmware.h"
#include "platform/memory.h"

namespace korvane {
namespace {

constexpr std::size_t detail_column = 2;
constexpr std::size_t longest_label = 32;          // characters shown
constexpr std::uint64_t largest_info = 4096;       // bytes of a volume's information record
constexpr std::uint64_t entry_buffer_size = 1024;  // holds any name of up to 471 characters

void put_record_text(LineText& line, std::span<const std::uint8_t> text, std::size_t limit) {
    for_each_unit(
        text, limit, [&line](char16_t unit) { line.put_utf16(unit); });
}

// ---- VOLUMES ------------------------------------------------------------------------------------

void list_volume_info(PagedReport& listing, std::uint64_t number, std::span<const std::uint8_t> record) {
    const auto field = [&record]<typename Field>(std::size_t offset, Field) {
        return read_unaligned<Field>(record.data() + offset);
    };
    const auto size = field(offsetof(uefi::FileSystemInfo, VolumeSize), std::uint64_t{});
    const auto free = field(offsetof(uefi::FileSystemInfo, FreeSpace), std::uint64_t{});
    const auto block = field(offsetof(uefi::FileSystemInfo, BlockSize), std::uint32_t{});
    const auto read_only = field(offsetof(uefi::FileSystemInfo, ReadOnly), std::uint8_t{});
    LineText heading;
    heading.put("Volume ").put_decimal(number).tab_to(10).put_decimal(size >> 20, 9).put(" MiB");
    heading.put_decimal(free >> 20, 11).put(" MiB free  ");
    heading.put(read_only != 0 ? "read-only " : "read/write").put("  \"");
    put_record_text(heading, record.subspan(uefi::file_system_info_label_offset), longest_label);
    if (!listing.line(heading.put('"'))) return;
    LineText details;
    details.tab_to(detail_column).put("bytes=").put_decimal(size).put("  free=").put_decimal(free);
    listing.line(details.put("  block=").put_decimal(block));
}

// The volume's information record, or an empty span when the firmware does not tell.
std::span<const std::uint8_t> read_volume_info(uefi::FileProtocol* root, const PoolBuffer& buffer) {
    std::uint64_t size = buffer.size();
    if (!buffer || uefi::is_error(root->GetInfo(root, &uefi::file_system_info_guid, &size, buffer.data())))
        return {};
    if (size < uefi::file_system_info_label_offset || size > buffer.size()) return {};
    return {buffer.data(), size};
}

void list_volume(PagedReport& listing, const VolumeWalk& volume) {
    const PoolBuffer buffer(largest_info);
    const auto record = read_volume_info(volume.root(), buffer);
    if (record.empty())
        listing.line(LineText().put("Volume ").put_decimal(volume.number()).tab_to(10).put("size unknown"));
    else
        list_volume_info(listing, volume.number(), record);
    list_device_path(listing, volume.handle(), detail_column);
}

// ---- DIRFS --------------------------------------------------------------------------------------

void put_time(LineText& line, const uefi::Time& time) {
    const auto two_digits = [&line](char before, unsigned value) {
        line.put(before)
            .put(static_cast<char>('0' + value / 10 % 10))
            .put(static_cast<char>('0' + value % 10));
    };
    line.put_decimal(time.Year, 4);
    two_digits('-', time.Month);
    two_digits('-', time.Day);
    two_digits(' ', time.Hour);
    two_digits(':', time.Minute);
}

void put_attributes(LineText& line, std::uint64_t attributes) {
    constexpr std::array<std::pair<std::uint64_t, char>, 5> letters = {{
        {uefi::file_directory, 'd'},
        {uefi::file_read_only, 'r'},
        {uefi::file_hidden, 'h'},
        {uefi::file_system, 's'},
        {uefi::file_archive, 'a'},
    }};
    for (const auto& [attribute, letter] : letters)
        line.put((attributes & attribute) != 0 ? letter : '-');
}

struct DirectoryTotals {
    std::uint64_t files;
    std::uint64_t directories;
    std::uint64_t bytes;  // of the files, modulo 2^64 should a file system claim that much
};

// Lists one entry: when it was changed, its attributes, its size and its name.
bool list_entry(PagedReport& listing, const DirectoryRecord& record, DirectoryTotals& totals) {
    LineText line;
    put_time(line, record.changed());
    line.put("  ");
    put_attributes(line, record.attributes());
    if (record.is_directory()) {
        line.put("         <DIR>");
        ++totals.directories;
    } else {
        line.put_decimal(record.size(), 14);
        ++totals.files;
        totals.bytes += record.size();
    }
    line.put("  ");
    put_record_text(line, record.name(), LineText::capacity);
    return listing.line(line);
}

void list_totals(PagedReport& listing, const DirectoryTotals& totals) {
    LineText line;
    line.put("  ").put_decimal(totals.files).put(totals.files == 1 ? " file, " : " files, ");
    line.put_decimal(totals.directories).put(totals.directories == 1 ? " directory, " : " directories, ");
    line.put_decimal(totals.bytes).put(" bytes (").put_decimal(totals.bytes >> 20).put(" MiB)");
    listing.line(line);
}

void list_directory(PagedReport& listing, const FileHandle& directory) {
    const PoolBuffer buffer(entry_buffer_size);
    if (!buffer) {
        listing.line("Out of memory.");
        return;
    }
    DirectoryTotals totals{};
    for (;;) {
        std::uint64_t size = buffer.size();
        if (!directory.read(buffer.data(), size)) {
            listing.line("Directory read error.");
            return;
        }
        if (size == 0) break;
        const DirectoryRecord record({buffer.data(), size});
        if (record.is_whole() && !list_entry(listing, record, totals)) return;
    }
    list_totals(listing, totals);
}

}  // namespace

CommandEnd do_volumes(WordReader&) {
    VolumeWalk walk;
    PagedReport listing;
    bool any = false;
    while (walk.next()) {
        any = true;
        list_volume(listing, walk);
        if (listing.aborted()) return CommandEnd::done;
    }
    if (!any) listing.line("No Simple File System volumes found.");
    return CommandEnd::done;
}

CommandEnd do_directory(WordReader& arguments) {
    std::uint64_t number = 0;
    if (!read_numbers(arguments, {&number})) return CommandEnd::bad_arguments;
    std::string_view path = path_argument(arguments.rest());
    if (path.empty()) path = "\\";
    const FileHandle root = open_volume(number);
    if (!root) {
        print_line(volume_not_found);
        return CommandEnd::done;
    }
    const FileHandle directory = open_on_volume(root.get(), path);
    if (!IsDirectory(directory.get())) {
        print_line("Directory not found or inaccessible.");
        return CommandEnd::done;
    }
    PagedReport listing;
    listing.line(LineText().put("Directory of volume ").put_decimal(number).put(": ").put(path));
    list_directory(listing, directory);
    return CommandEnd::done;
}

}  // namespace korvane
