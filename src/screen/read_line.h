// The echoing line reader behind INPUT and LINE INPUT.
#pragma once

#include <cstdint>
#include <span>

namespace korvane {

inline constexpr std::int32_t line_aborted = -1;

// Reads a typed line into `buffer` at the console cursor, echoing it, until Enter. Backspace takes the last
// character back; other control characters are ignored, and so is every character once buffer.size() - 1
// bytes are held. The bytes are zero-terminated. Returns their number, or line_aborted on Escape.
std::int32_t key_read_line(std::span<std::uint8_t> buffer);

}  // namespace korvane
