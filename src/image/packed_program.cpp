#include "image/packed_program.h"

#include <string_view>

#include "files/file_handle.h"
#include "files/own_image.h"
#include "image/certificate_table.h"
#include "image/image_blocks.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/program_store.h"

namespace korvane {

PackedProgram packed_program;

namespace {

constexpr std::uint64_t trailer_magic_size = 16;
constexpr std::uint64_t certificate_alignment = 8;  // of a signature in the file

bool has_magic(const std::uint8_t* bytes, std::string_view magic) {
    return compare_bytes(bytes, magic.data(), magic.size()) == 0;
}

// Reads the trailer that ends at `end` and checks it.
bool read_trailer(const FileHandle& image, std::uint64_t end, PackedProgram& found) {
    std::uint8_t trailer[packed_trailer_size];
    if (end < packed_trailer_size || !image.set_position(end - packed_trailer_size)) return false;
    if (!ImageReader(image).read(trailer, packed_trailer_size)) return false;
    if (!has_magic(trailer, packed_trailer_magic)) return false;

    const auto length = read_unaligned<std::uint64_t>(trailer + trailer_magic_size);
    const std::uint64_t room = end - packed_trailer_size;
    if (length < packed_header_size || length > room) return false;
    found = {.present = true, .start = room - length, .length = length};
    return true;
}

// Looks for the trailer at the end of the image file. When a standalone image has been signed, the signature
// follows the trailer, behind up to seven bytes that align it.
bool find_packed_program(PackedProgram& found) {
    const FileHandle image = open_own_image();
    std::uint64_t size = 0;
    if (!image.find_size(size) || size < packed_trailer_size) return false;
    if (read_trailer(image, size, found)) return true;

    const std::uint64_t end = find_certificate_table(image, size);
    if (end == size) return false;
    for (std::uint64_t padding = 0; padding < certificate_alignment; ++padding)
        if (end > padding && read_trailer(image, end - padding, found)) return true;
    return false;
}

// Reads one line record and stores the line. `remaining` counts the packed bytes still to come.
bool load_line(ImageReader& reader, std::uint64_t& remaining) {
    std::uint8_t head[packed_line_head_size];
    if (remaining < packed_line_head_size || !reader.read(head, packed_line_head_size)) return false;
    remaining -= packed_line_head_size;

    const auto number = read_unaligned<std::uint32_t>(head);
    const auto length = read_unaligned<std::uint32_t>(head + 4);
    if (number > max_line_number || length > max_line_text || length > remaining) return false;
    char text[max_line_text];
    if (!reader.read(text, length)) return false;
    remaining -= length;

    store_line(number, {text, length});
    return !error_pending();
}

}  // namespace

bool detect_packed_program() {
    packed_program = PackedProgram{};
    return find_packed_program(packed_program);
}

bool load_packed_program() {
    if (!packed_program.present || packed_program.length < packed_header_size) return false;
    const FileHandle image = open_own_image();
    if (!image.set_position(packed_program.start)) return false;

    ImageReader reader(image);
    std::uint8_t header[packed_header_size];
    if (!reader.read(header, packed_header_size) || !has_magic(header, packed_magic)) return false;
    const auto line_count = read_unaligned<std::uint32_t>(header + 4);
    if (line_count > max_program_lines) return false;

    clear_program();
    std::uint64_t remaining = packed_program.length - packed_header_size;
    for (std::uint32_t i = 0; i < line_count; ++i)
        if (!load_line(reader, remaining)) return false;
    return remaining == 0;
}

}  // namespace korvane
