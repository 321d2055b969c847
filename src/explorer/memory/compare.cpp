#include "explorer/memory/compare.h"

#include "explorer/memory/byte_search.h"
#include "explorer/memory/memory_range.h"
#include "explorer/report.h"
#include "platform/memory_map.h"
#include "statements/data/memory_access.h"

namespace korvane {
namespace {

void put_byte_at(LineText& line, std::uint64_t address) {
    line.put_address(address).put(' ').put_hex(peek_memory(address, 1), 2);
}

void print_difference(std::uint64_t first, std::uint64_t second) {
    LineText line;
    put_byte_at(line, first);
    line.put("  !=  ");
    put_byte_at(line, second);
    print_line(line);
}

}  // namespace

CommandEnd do_compare(WordReader& arguments) {
    MemoryRange block{};
    std::uint64_t other = 0;
    if (const auto ended = read_addresses(arguments, {&block.start, &block.end, &other})) return *ended;
    if (!check_range(block) || !check_wrap(other, block.count())) return CommandEnd::done;

    const std::uint64_t count = block.count();
    const std::uint64_t readable =
        accessible_run_up(Access::read, other, accessible_run_up(Access::read, block.start, count));
    const auto* first = reinterpret_cast<const std::uint8_t*>(block.start);
    const auto* second = reinterpret_cast<const std::uint8_t*>(other);
    LinePager pager(finding_page());
    std::uint64_t differences = 0;
    std::uint64_t offset = 0;
    while ((offset += find_difference(first + offset, second + offset, readable - offset)) < readable) {
        ++differences;
        print_difference(block.start + offset, other + offset);
        pager.after_line();
        ++offset;
    }
    if (readable < count) {
        print_line(LineText().put("Read refused/unavailable at offset ").put_decimal(readable));
    } else {
        LineText total;
        total.put("Compared ").put_decimal(count).put(" bytes, ").put_decimal(differences);
        print_line(total.put(" differences."));
    }
    return CommandEnd::done;
}

}  // namespace korvane
