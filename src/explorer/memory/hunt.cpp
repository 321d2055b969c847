#include "explorer/memory/hunt.h"

#include <array>
#include <span>

#include "explorer/memory/byte_search.h"
#include "explorer/memory/memory_range.h"
#include "explorer/number_syntax.h"
#include "explorer/report.h"
#include "platform/memory_map.h"

namespace korvane {
namespace {

constexpr std::size_t longest_pattern = 256;  // bytes

void hunt(const MemoryRange& range, std::span<const std::uint8_t> pattern) {
    if (pattern.empty()) {
        print_line("Empty pattern.");
        return;
    }
    if (!check_range(range)) return;
    if (pattern.size() > range.count()) {
        print_line("Pattern is longer than range.");
        return;
    }
    const std::uint64_t readable = accessible_run_up(Access::read, range.start, range.count());
    PatternHunt search(reinterpret_cast<const std::uint8_t*>(range.start), readable,
                       range.count() - pattern.size(), pattern);
    LinePager pager(finding_page());
    std::uint64_t matches = 0;
    std::uint64_t offset = 0;
    HuntResult result = HuntResult::exhausted;
    while ((result = search.next(offset)) == HuntResult::match) {
        ++matches;
        print_line(LineText().put_address(range.start + offset));
        pager.after_line();
    }
    if (result == HuntResult::unavailable)
        print_line("Read refused/unavailable.");
    else
        print_line(LineText().put("Found ").put_decimal(matches).put(" match(es)."));
}

}  // namespace

CommandEnd do_hunt(WordReader& arguments) {
    MemoryRange range{};
    if (const auto ended = read_addresses(arguments, {&range.start, &range.end})) return *ended;
    std::array<std::uint8_t, longest_pattern> pattern{};
    std::size_t length = 0;
    bool bad = false;
    while (const auto byte = next_byte(arguments, bad)) {
        if (length == longest_pattern) {
            print_line("Pattern limited to 256 bytes.");
            return CommandEnd::done;
        }
        pattern[length++] = *byte;
    }
    if (bad) return CommandEnd::done;
    hunt(range, std::span(pattern).first(length));
    return CommandEnd::done;
}

CommandEnd do_hunt_text(WordReader& arguments) {
    MemoryRange range{};
    if (const auto ended = read_addresses(arguments, {&range.start, &range.end})) return *ended;
    const std::string_view text = arguments.rest();
    if (text.size() > longest_pattern) {
        print_line("ASCII pattern limited to 256 bytes.");
        return CommandEnd::done;
    }
    hunt(range, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    return CommandEnd::done;
}

}  // namespace korvane
