#include "explorer/hex_line.h"

#include <algorithm>

namespace korvane {
namespace {

constexpr bool is_unread(const HexLine& line, unsigned column) {
    return (line.unread >> column & 1) != 0;
}

constexpr char shown(std::uint8_t byte) {
    return byte >= 32 && byte <= 126 ? static_cast<char>(byte) : '.';
}

}  // namespace

void HexLine::take(std::span<const std::uint8_t> source) {
    count = static_cast<unsigned>(std::min<std::size_t>(source.size(), hex_line_bytes));
    std::copy_n(source.begin(), count, bytes.begin());
}

LineText format_hex_line(const HexLine& line) {
    LineText text;
    text.put_hex(line.address, line.address_digits).put("  ");
    for (unsigned column = 0; column < hex_line_bytes; ++column) {
        if (column >= line.count)
            text.put(line.absent);
        else if (is_unread(line, column))
            text.put("??");
        else
            text.put_hex(line.bytes[column], 2);
        text.put(column == hex_line_bytes / 2 - 1 ? "  " : " ");
    }
    text.put(' ');
    for (unsigned column = 0; column < line.count; ++column)
        text.put(is_unread(line, column) ? '?' : shown(line.bytes[column]));
    return text;
}

}  // namespace korvane
