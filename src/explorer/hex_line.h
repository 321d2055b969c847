#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "explorer/line_text.h"

namespace korvane {

inline constexpr unsigned hex_line_bytes = 16;

// One line of a hexadecimal and character dump.
struct HexLine {
    std::uint64_t address;  // or offset, of the first byte
    unsigned address_digits = 16;
    std::array<std::uint8_t, hex_line_bytes> bytes{};
    unsigned count = hex_line_bytes;  // bytes that the line is to show, 1 to 16
    std::uint32_t unread = 0;         // bit i: byte i could not be read and is shown as "??" and "?"
    std::string_view absent = "  ";   // what stands in the columns beyond `count`

    // Takes the bytes to show, at most 16.
    void take(std::span<const std::uint8_t> source);
};

// The address, two blanks, 16 columns of two digits and a blank with one more blank after the eighth, a
// blank, and a character for each of the `count` bytes: 32 to 126 as they are, others ".".
LineText format_hex_line(const HexLine& line);

}  // namespace korvane
