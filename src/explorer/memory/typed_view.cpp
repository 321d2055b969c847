#include "explorer/memory/typed_view.h"

#include <bit>

#include "explorer/memory/memory_range.h"
#include "explorer/report.h"
#include "numbers/format.h"
#include "platform/memory_map.h"
#include "statements/data/memory_access.h"

namespace korvane {
namespace {

constexpr unsigned viewed_bytes = 8;
constexpr std::size_t value_column = 9;
constexpr std::size_t unsigned_column = 27;  // past 16 hexadecimal digits

LineText labelled(const char* label) {
    LineText line;
    line.put(label).tab_to(value_column);
    return line;
}

// One line for the lowest `bytes` bytes of the data: hexadecimal and unsigned.
void print_unsigned(const char* label, std::uint64_t data, unsigned bytes) {
    const std::uint64_t value = bytes == 8 ? data : data & ((std::uint64_t{1} << (8 * bytes)) - 1);
    LineText line = labelled(label);
    line.put_hex(value, 2 * bytes).tab_to(unsigned_column);
    print_line(line.put("unsigned=").put_decimal(value));
}

void print_real(const char* label, double value, Type type) {
    // The sign place is a blank for a positive number, which keeps the digits of both signs aligned.
    const NumberText text = format_number(Value::of_real(value, type));
    std::string_view shown = text.view();
    if (shown.starts_with(' ')) shown.remove_prefix(1);
    if (shown.ends_with(' ')) shown.remove_suffix(1);
    print_line(labelled(label).put(shown));
}

void print_text(std::uint64_t data) {
    LineText line = labelled("ASCII");
    for (unsigned i = 0; i < viewed_bytes; ++i) {
        const auto byte = static_cast<std::uint8_t>(data >> (8 * i));
        line.put(byte >= 32 && byte <= 126 ? static_cast<char>(byte) : '.');
    }
    print_line(line);
}

void print_views(std::uint64_t address, std::uint64_t data) {
    print_line(labelled("Address").put_address(address));
    print_unsigned("BYTE", data, 1);
    print_unsigned("WORD", data, 2);
    print_unsigned("DWORD", data, 4);
    print_unsigned("QWORD", data, 8);
    print_line(labelled("INT16").put_signed(static_cast<std::int16_t>(data)));
    print_line(labelled("INT32").put_signed(static_cast<std::int32_t>(data)));
    print_line(labelled("INT64").put_signed(static_cast<std::int64_t>(data)));
    const auto single = std::bit_cast<float>(static_cast<std::uint32_t>(data));
    print_real("FLOAT", static_cast<double>(single), Type::SINGLE);
    print_real("DOUBLE", std::bit_cast<double>(data), Type::DOUBLE);
    print_text(data);
}

}  // namespace

CommandEnd do_view(WordReader& arguments) {
    std::uint64_t address = 0;
    if (const auto ended = read_addresses(arguments, {&address})) return *ended;
    if (!check_wrap(address, viewed_bytes)) return CommandEnd::done;
    if (accessible_run_up(Access::read, address, viewed_bytes) < viewed_bytes) {
        print_line("Read refused/unavailable.");
        return CommandEnd::done;
    }
    print_views(address, peek_memory(address, viewed_bytes));
    return CommandEnd::done;
}

}  // namespace korvane
