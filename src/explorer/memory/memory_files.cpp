#include "explorer/memory/memory_files.h"

#include <algorithm>

#include "explorer/memory/memory_range.h"
#include "explorer/report.h"
#include "files/file_handle.h"
#include "files/named_files.h"
#include "platform/memory_map.h"

namespace korvane {
namespace {

// Moved in one firmware call. Far larger transfers are known to trip some file system drivers.
constexpr std::uint64_t transfer_bytes = std::uint64_t{1024} * 1024;

bool write_memory(const FileHandle& file, std::uint64_t address, std::uint64_t count) {
    while (count != 0) {
        const std::uint64_t piece = std::min(count, transfer_bytes);
        if (!file.write_exactly(reinterpret_cast<const void*>(address), piece)) return false;
        address += piece;
        count -= piece;
    }
    return true;
}

bool read_memory(const FileHandle& file, std::uint64_t address, std::uint64_t count) {
    while (count != 0) {
        const std::uint64_t piece = std::min(count, transfer_bytes);
        if (!file.read_exactly(reinterpret_cast<void*>(address), piece)) return false;
        address += piece;
        count -= piece;
    }
    return true;
}

// Bytes before a refusal stay in the file, as they stay in memory when the other commands are refused.
void save(std::string_view name, const MemoryRange& range) {
    const FileHandle file = OpenFileByName(name, OpenMode::create);
    if (!file) {
        print_line("Cannot create file.");
        return;
    }
    const std::uint64_t readable = accessible_run_up(Access::read, range.start, range.count());
    if (!write_memory(file, range.start, readable))
        print_line("File write error.");
    else if (readable != range.count())
        print_line(LineText().put("Read refused/unavailable at ").put_address(range.start + readable));
    else
        print_line(LineText().put("Saved ").put_decimal(readable).put(" bytes to ").put(name));
}

void load(std::string_view name, std::uint64_t address) {
    const FileHandle file = OpenFileByName(name, OpenMode::read);
    if (!file || IsDirectory(file.get())) {
        print_line("File not found.");
        return;
    }
    std::uint64_t size = 0;
    if (!file.find_size(size)) {
        print_line("File read error.");
        return;
    }
    if (!check_wrap(address, size)) return;
    const std::uint64_t writable = accessible_run_up(Access::write, address, size);
    if (!read_memory(file, address, writable))
        print_line("File read error.");
    else if (writable != size)
        print_line(LineText().put("Write refused/unavailable at ").put_address(address + writable));
    else
        print_line(LineText().put("Loaded ").put_decimal(size).put(" bytes at ").put_address(address));
}

}  // namespace

CommandEnd do_save_memory(WordReader& arguments) {
    const Word name = arguments.next();
    MemoryRange range{};
    if (const auto ended = read_addresses(arguments, {&range.start, &range.end})) return *ended;
    if (check_range(range)) save(name.view(), range);
    return CommandEnd::done;
}

CommandEnd do_load_memory(WordReader& arguments) {
    const Word name = arguments.next();
    std::uint64_t address = 0;
    if (const auto ended = read_addresses(arguments, {&address})) return *ended;
    load(name.view(), address);
    return CommandEnd::done;
}

}  // namespace korvane
