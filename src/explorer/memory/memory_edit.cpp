#include "explorer/memory/memory_edit.h"

#include <algorithm>

#include "explorer/memory/memory_range.h"
#include "explorer/number_syntax.h"
#include "explorer/report.h"
#include "platform/memory.h"
#include "platform/memory_map.h"
#include "statements/data/memory_access.h"

namespace korvane {
namespace {

std::uint8_t* pointer_to(std::uint64_t address) {
    return reinterpret_cast<std::uint8_t*>(address);
}

void print_write_refused(std::uint64_t address) {
    print_line(LineText().put("Write refused/unavailable at ").put_address(address));
}

// Writes one byte if its address is writable; otherwise says so.
bool write_byte(std::uint64_t address, std::uint8_t byte) {
    if (accessible_run_up(Access::write, address, 1) == 0) {
        print_write_refused(address);
        return false;
    }
    poke_memory(address, byte, 1);
    return true;
}

// Where the next of a row of bytes goes; false, with the message, when the row passes the top of memory.
bool next_address(std::uint64_t base, std::uint64_t written, std::uint64_t& address) {
    if (!check_wrap(base, written + 1)) return false;
    address = base + written;
    return true;
}

// Copies the range so that the result is right when source and destination overlap. Returns true, or false
// and the offset of the byte that could not be copied: of the bytes before it when copying upward, of those
// after it when copying downward, all have been.
bool transfer(const MemoryRange& source, std::uint64_t destination, std::uint64_t& stopped_at) {
    const std::uint64_t count = source.count();
    const bool downward = destination > source.start && destination <= source.end;
    if (!downward) {
        const std::uint64_t readable = accessible_run_up(Access::read, source.start, count);
        const std::uint64_t copied = accessible_run_up(Access::write, destination, readable);
        move_bytes(pointer_to(destination), pointer_to(source.start), copied);
        stopped_at = copied;
        return copied == count;
    }
    const std::uint64_t readable = accessible_run_down(Access::read, source.end, count);
    const std::uint64_t copied = accessible_run_down(Access::write, destination + (count - 1), readable);
    const std::uint64_t skipped = count - copied;
    move_bytes(pointer_to(destination + skipped), pointer_to(source.start + skipped), copied);
    stopped_at = skipped - 1;
    return copied == count;
}

}  // namespace

CommandEnd do_fill(WordReader& arguments) {
    MemoryRange range{};
    if (const auto ended = read_addresses(arguments, {&range.start, &range.end})) return *ended;
    const auto byte = parse_byte(arguments.next().view());
    if (!byte) return CommandEnd::bad_arguments;
    if (!check_range(range)) return CommandEnd::done;
    const std::uint64_t writable = accessible_run_up(Access::write, range.start, range.count());
    fill_bytes(pointer_to(range.start), *byte, writable);
    if (writable != range.count())
        print_write_refused(range.start + writable);
    else
        print_line(LineText().put("Filled ").put_address(range.start).put('-').put_address(range.end));
    return CommandEnd::done;
}

CommandEnd do_enter_bytes(WordReader& arguments) {
    std::uint64_t base = 0;
    if (const auto ended = read_addresses(arguments, {&base})) return *ended;
    std::uint64_t written = 0;
    bool bad = false;
    while (const auto byte = next_byte(arguments, bad)) {
        std::uint64_t address = 0;
        if (!next_address(base, written, address) || !write_byte(address, *byte)) return CommandEnd::done;
        ++written;
    }
    if (bad) return CommandEnd::done;
    if (written == 0)
        print_line("No bytes supplied.");
    else
        print_line(LineText().put("Wrote ").put_decimal(written).put(" bytes."));
    return CommandEnd::done;
}

CommandEnd do_enter_text(WordReader& arguments) {
    std::uint64_t base = 0;
    if (const auto ended = read_addresses(arguments, {&base})) return *ended;
    const std::string_view text = arguments.rest();
    if (text.empty()) return CommandEnd::bad_arguments;
    std::uint64_t written = 0;
    for (const char character : text) {
        std::uint64_t address = 0;
        if (!next_address(base, written, address)) return CommandEnd::done;
        if (!write_byte(address, static_cast<std::uint8_t>(character))) return CommandEnd::done;
        ++written;
    }
    print_line(LineText().put("Wrote ").put_decimal(written).put(" ASCII bytes."));
    return CommandEnd::done;
}

CommandEnd do_transfer(WordReader& arguments) {
    MemoryRange source{};
    std::uint64_t destination = 0;
    if (const auto ended = read_addresses(arguments, {&source.start, &source.end, &destination}))
        return *ended;
    if (!check_range(source) || !check_wrap(destination, source.count())) return CommandEnd::done;
    std::uint64_t stopped_at = 0;
    if (transfer(source, destination, stopped_at))
        print_line(LineText().put("Transferred ").put_decimal(source.count()).put(" bytes."));
    else
        print_line(LineText().put("Transfer stopped at offset ").put_decimal(stopped_at));
    return CommandEnd::done;
}

}  // namespace korvane
