#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace korvane {

// Turns the bytes of a text file into console characters and line ends.
//
// Lines end with CR LF, LF or CR alone. UTF-16 (as firmware shell scripts often are) is known by its
// little-endian byte order mark; of each unit the low byte is taken. A UTF-8 byte order mark is dropped.
// Control characters come out as ".", so that a binary file does no harm;
// bytes of 128 and above as they are.
class TextDecoder {
  public:
    static constexpr std::uint8_t line_end = 13;
    static constexpr std::uint8_t tab = 9;

    // Looks at the start of the file; to be called once, first.
    // Returns the bytes of the mark, to be skipped.
    std::uint64_t begin(std::span<const std::uint8_t> start);

    // Takes the next byte. Gives the character that it completes, if any:
    // line_end, tab, or one to be shown.
    std::optional<std::uint8_t> take(std::uint8_t byte);

  private:
    bool is_utf16_ = false;
    bool half_unit_ = false;  // the low byte of a UTF-16 unit has been taken
    std::uint8_t low_byte_ = 0;
    bool after_return_ = false;  // a line feed now belongs to the line end before it
};

}  // namespace korvane
