#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvane {

// One line of an explorer report while it is put together. Text beyond the capacity is dropped. The putting
// functions return the line, so that a whole line reads as one chain of calls.
class LineText {
  public:
    static constexpr std::size_t capacity = 256;  // characters

    LineText& put(char character);
    LineText& put(std::string_view text);
    LineText& put(const char* text);  // for constants: the many calls are short without a length

    // The value in upper-case hexadecimal with leading zeros, `digits` (1 to 16) wide;
    // higher digits are cut.
    LineText& put_hex(std::uint64_t value, unsigned digits);

    // An address: 16 hexadecimal digits.
    LineText& put_address(std::uint64_t address) { return put_hex(address, 16); }

    // The value in decimal, filled with blanks on the left up to `width` characters.
    LineText& put_decimal(std::uint64_t value, unsigned width = 0);

    LineText& put_signed(std::int64_t value);

    // A character of UTF-16 text as the 8-bit console shows it: its low byte, with "." for a zero byte and
    // for the carriage return, which would end the line.
    LineText& put_utf16(char16_t unit);

    // Blanks up to a column, counted from 0; at least one blank when the text is there already.
    LineText& tab_to(std::size_t column);

    std::size_t length() const { return length_; }
    std::string_view view() const { return {text_.data(), length_}; }

  private:
    std::array<char, capacity> text_;
    std::size_t length_ = 0;
};

}  // namespace korvane
