// What is on the console, and the lines that are typed there, as text.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "screen/console.h"

namespace korvane::test {

// A row without trailing blanks.
inline std::string row_text(std::uint32_t row) {
    std::string text(reinterpret_cast<const char*>(console.grid[row]), text_columns());
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// What `read` puts into a buffer of so many bytes, and ends; "(aborted)" when it gives `aborted`.
template <typename Read>
std::string line_read(Read read, std::int32_t aborted, std::size_t capacity) {
    std::array<std::uint8_t, 256> buffer;
    buffer.fill(0xEE);
    const std::int32_t length = read(std::span(buffer).first(capacity));
    if (length == aborted) return "(aborted)";
    EXPECT_EQ(buffer[static_cast<std::size_t>(length)], 0);
    return {reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(length)};
}

}  // namespace korvane::test
