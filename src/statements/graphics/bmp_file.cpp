// The layout read here, little-endian; the fields not listed are ignored:
//
//   offset  size  field
//        0     2  "BM"
//       10     4  offset of the pixel data, at least 54
//       18     4  width, signed
//       22     4  height, signed; negative when the rows are stored from the top down
//       28     2  bits a pixel
//       30     4  compression: 0, or with 32 bits also 3 (bit fields, taken as the usual blue, green, red)
//
// Rows are padded to a multiple of 4 bytes; a pixel is blue, green, red
// and, with 32 bits, a byte that is ignored.
#include "statements/graphics/bmp_file.h"

#include "files/file_handle.h"
#include "files/named_files.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

namespace {

constexpr std::uint32_t head_size = 54;

// What a file head says, checked.
struct Layout {
    std::uint32_t width;
    std::uint32_t height;
    bool top_down;
    std::uint32_t pixel_size;  // bytes
    std::uint32_t data_offset;

    std::uint32_t stride() const { return (pixel_size * width + 3) & ~3U; }
};

struct BmpReader {
    std::uint8_t row[max_bitmap_side * 4];  // scratch: one stored row
};
BmpReader bmp_reader;

// The head's fields. Raises "Bad file mode" without the signature and "Illegal function call" for what is not
// supported; false after an error.
bool parse_head(const std::uint8_t (&head)[head_size], Layout& layout) {
    if (head[0] != 'B' || head[1] != 'M') {
        raise(message::bad_file_mode);
        return false;
    }
    const auto width = read_unaligned<std::int32_t>(head + 18);
    const std::int64_t height = read_unaligned<std::int32_t>(head + 22);
    const auto bits = read_unaligned<std::uint16_t>(head + 28);
    const auto compression = read_unaligned<std::uint32_t>(head + 30);
    const std::int64_t rows = height < 0 ? -height : height;
    const bool depth_supported =
        bits == 24 ? compression == 0 : bits == 32 && (compression == 0 || compression == 3);
    if (width < 1 || width > std::int32_t{max_bitmap_side} || rows < 1 ||
        rows > std::int64_t{max_bitmap_side} || !depth_supported) {
        raise(message::illegal_function_call);
        return false;
    }
    layout = {.width = static_cast<std::uint32_t>(width),
              .height = static_cast<std::uint32_t>(rows),
              .top_down = height < 0,
              .pixel_size = bits / 8U,
              .data_offset = read_unaligned<std::uint32_t>(head + 10)};
    return true;
}

// Reads until `size` bytes have come; false after a failure and at the end of the file.
bool read_all(FileHandle& file, std::uint8_t* bytes, std::uint64_t size) {
    while (size != 0) {
        std::uint64_t part = size;
        if (!file.read(bytes, part) || part == 0) return false;
        bytes += part;
        size -= part;
    }
    return true;
}

// Skips by reading: a position behind the end of the file must not pass for one inside.
bool skip(FileHandle& file, std::uint32_t count) {
    while (count != 0) {
        const std::uint32_t part =
            count < sizeof bmp_reader.row ? count : std::uint32_t{sizeof bmp_reader.row};
        if (!read_all(file, bmp_reader.row, part)) return false;
        count -= part;
    }
    return true;
}

void convert_row(const Layout& layout, std::uint32_t* pixels) {
    const std::uint8_t* bytes = bmp_reader.row;
    for (std::uint32_t x = 0; x < layout.width; ++x, bytes += layout.pixel_size)
        pixels[x] = std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[0];
}

bool read_rows(FileHandle& file, const Layout& layout, std::uint32_t* pixels) {
    for (std::uint32_t i = 0; i < layout.height; ++i) {
        if (!read_all(file, bmp_reader.row, layout.stride())) return false;
        const std::uint32_t y = layout.top_down ? i : layout.height - 1 - i;
        convert_row(layout, pixels + std::uint64_t{y} * layout.width);
    }
    return true;
}

}  // namespace

BmpImage load_bmp(std::string_view name) {
    constexpr BmpImage nothing{nullptr, 0, 0};
    FileHandle file = OpenFileByName(name, OpenMode::read);
    if (!file) {
        raise(message::file_not_found);
        return nothing;
    }
    std::uint8_t head[head_size];
    if (!file.read_exactly(head, head_size)) {
        raise(message::bad_file_mode);
        return nothing;
    }
    Layout layout;
    if (!parse_head(head, layout)) return nothing;
    std::uint8_t* memory = allocate_low(std::uint64_t{layout.width} * layout.height * 4);
    if (memory == nullptr) {
        raise(message::out_of_memory);
        return nothing;
    }
    auto* pixels = reinterpret_cast<std::uint32_t*>(memory);
    if (layout.data_offset < head_size || !skip(file, layout.data_offset - head_size) ||
        !read_rows(file, layout, pixels)) {
        raise(message::bad_file_mode);
        return nothing;
    }
    return {pixels, layout.width, layout.height};
}

}  // namespace korvane
