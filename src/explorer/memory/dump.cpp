#include "explorer/memory/dump.h"

#include <algorithm>

#include "explorer/hex_line.h"
#include "explorer/memory/memory_range.h"
#include "explorer/number_syntax.h"
#include "explorer/report.h"
#include "platform/memory_map.h"
#include "statements/data/memory_access.h"

namespace korvane {
namespace {

constexpr std::uint64_t default_length = 256;
constexpr std::uint64_t longest_dump = 65536;

// The line at `address`; without `forced` only bytes in readable memory are read.
HexLine read_line(std::uint64_t address, unsigned count, bool forced) {
    HexLine line{.address = address, .count = count, .absent = "??"};
    for (unsigned i = 0; i < count; ++i)
        if (forced || accessible_run_up(Access::read, address + i, 1) == 1)
            line.bytes[i] = static_cast<std::uint8_t>(peek_memory(address + i, 1));
        else
            line.unread |= 1u << i;
    return line;
}

void print_dump(std::uint64_t address, std::uint64_t length, bool forced) {
    LinePager pager(dump_page());
    for (std::uint64_t offset = 0; offset < length; offset += hex_line_bytes) {
        const auto count = static_cast<unsigned>(std::min<std::uint64_t>(length - offset, hex_line_bytes));
        const HexLine line = read_line(address + offset, count, forced);
        pager.before_line();
        print_line(format_hex_line(line));
        if (line.unread != 0) {
            print_line("Region is unreadable or protected. On UEFI, M! may force the read.");
            return;
        }
    }
}

void dump(std::uint64_t address, std::uint64_t length, bool forced) {
    if (length == 0) length = default_length;
    if (length > longest_dump) {
        print_line("Dump limited to 65536 bytes.");
        length = longest_dump;
    }
    if (!check_wrap(address, length)) return;
    print_dump(address, length, forced);
    // A dump that ends at the top of the address space goes on at 0.
    dump_continuation = {true, address + length, length};
}

CommandEnd dump_command(WordReader& arguments, bool forced) {
    const Word address_word = arguments.next();
    if (address_word.empty()) {
        if (dump_continuation.made)
            dump(dump_continuation.address, dump_continuation.length, forced);
        else
            print_line("No previous dump address.");
        return CommandEnd::done;
    }
    const auto address = parse_address(address_word.view());
    if (!address) {
        print_line(bad_address);
        return CommandEnd::done;
    }
    const Word length_word = arguments.next();
    const auto length = length_word.empty() ? default_length : parse_number(length_word.view());
    if (length)
        dump(*address, *length, forced);
    else
        print_line(bad_length);
    return CommandEnd::done;
}

}  // namespace

DumpContinuation dump_continuation;

void initialize_dump() {
    dump_continuation = {};
}

CommandEnd do_dump(WordReader& arguments) {
    return dump_command(arguments, false);
}

CommandEnd do_forced_dump(WordReader& arguments) {
    return dump_command(arguments, true);
}

}  // namespace korvane
