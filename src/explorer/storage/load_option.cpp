#include "explorer/storage/load_option.h"

#include "platform/memory.h"

namespace korvane {
namespace {

constexpr std::size_t path_length_field = 4;
constexpr std::size_t description_field = 6;
constexpr std::size_t unit_bytes = sizeof(char16_t);
constexpr std::size_t longest_description = 128;  // characters shown

char16_t unit_at(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return read_unaligned<char16_t>(bytes.data() + offset);
}

}  // namespace

std::optional<LoadOption> decode_load_option(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < description_field) return std::nullopt;
    std::size_t end = description_field;  // of the description
    while (bytes.size() - end >= unit_bytes && unit_at(bytes, end) != 0)
        end += unit_bytes;
    if (bytes.size() - end < unit_bytes) return std::nullopt;
    const std::size_t path = end + unit_bytes;
    const auto path_length = read_unaligned<std::uint16_t>(bytes.data() + path_length_field);
    if (path_length > bytes.size() - path) return std::nullopt;
    return LoadOption{read_unaligned<std::uint32_t>(bytes.data()),
                      bytes.subspan(description_field, end - description_field),
                      bytes.subspan(path, path_length)};
}

void put_description(LineText& line, const LoadOption& option) {
    for (std::size_t i = 0; i < option.description.size() && i / unit_bytes < longest_description;
         i += unit_bytes)
        line.put_utf16(unit_at(option.description, i));
}

}  // namespace korvane
