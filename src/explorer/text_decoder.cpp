#include "explorer/text_decoder.h"

#include "platform/characters.h"

namespace korvane {
namespace {

constexpr std::uint8_t first_printable = 32;

}  // namespace

std::uint64_t TextDecoder::begin(std::span<const std::uint8_t> start) {
    is_utf16_ = start.size() >= 2 && start[0] == 0xFF && start[1] == 0xFE;
    if (is_utf16_) return 2;
    const bool utf8_mark = start.size() >= 3 && start[0] == 0xEF && start[1] == 0xBB && start[2] == 0xBF;
    return utf8_mark ? 3 : 0;
}

std::optional<std::uint8_t> TextDecoder::take(std::uint8_t byte) {
    if (is_utf16_) {
        half_unit_ = !half_unit_;
        if (half_unit_) {
            low_byte_ = byte;
            return std::nullopt;
        }
        byte = low_byte_;
    }
    const bool ends_return = after_return_ && byte == '\n';
    after_return_ = byte == line_end;
    if (ends_return) return std::nullopt;
    if (is_line_break(byte)) return line_end;
    if (byte == tab || byte >= first_printable) return byte;
    return '.';
}

}  // namespace korvane
