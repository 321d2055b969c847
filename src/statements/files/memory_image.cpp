#include "statements/files/memory_image.h"

#include "files/file_handle.h"
#include "files/named_files.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "statements/files/file_name.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

namespace {

constexpr std::uint8_t image_marker = 0xFD;
constexpr std::uint8_t end_of_file_byte = 0x1A;
constexpr std::int64_t max_image_length = 65535;
constexpr std::int64_t least_load_address = 0x10000;

struct ImageHeader {
    static constexpr std::uint64_t size = 7;
    static constexpr std::uint64_t offset_at = 3;
    static constexpr std::uint64_t length_at = 5;

    std::uint8_t bytes[size + 1];  // one more for the trailer's end-of-file byte

    std::uint16_t offset() const { return read_unaligned<std::uint16_t>(bytes + offset_at); }
    std::uint16_t length() const { return read_unaligned<std::uint16_t>(bytes + length_at); }
};

ImageHeader make_header(std::int64_t address, std::int64_t length) {
    ImageHeader header{{image_marker, 0, 0, 0, 0, 0, 0, end_of_file_byte}};
    write_unaligned(header.bytes + ImageHeader::offset_at, static_cast<std::uint16_t>(address));
    write_unaligned(header.bytes + ImageHeader::length_at, static_cast<std::uint16_t>(length));
    return header;
}

// Writes the image. Null, or the message of what went wrong; every handle is closed by then.
const char* write_image(const FileName& name, std::int64_t address, std::int64_t length) {
    const FileHandle file = OpenFileByName(name.view(), OpenMode::create);
    if (!file) return message::bad_file_name;
    const ImageHeader header = make_header(address, length);
    if (!file.write_exactly(header.bytes, ImageHeader::size)) return message::disk_i_o_error;
    const auto* bytes = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(address));
    if (!file.write_exactly(bytes, static_cast<std::uint64_t>(length))) return message::disk_i_o_error;
    // A trailer that could not be written is not missed by any reader.
    file.write_exactly(header.bytes, ImageHeader::size + 1);
    return nullptr;
}

// Reads the image to `address`, or to the header's offset when none was given. Null, or the message of what
// went wrong.
const char* read_image(const FileName& name, bool address_given, std::int64_t address) {
    const FileHandle file = OpenFileByName(name.view(), OpenMode::read);
    if (!file) return message::file_not_found;
    ImageHeader header{};
    if (!file.read_exactly(header.bytes, ImageHeader::size) || header.bytes[0] != image_marker)
        return message::bad_file_mode;
    // The header's 16-bit offset never reaches the least address, so an image cannot be loaded without one:
    // nothing may be loaded into low machine memory.
    if (!address_given) address = header.offset();
    if (address < least_load_address) return message::illegal_function_call;
    if (header.length() == 0) return nullptr;
    auto* bytes = reinterpret_cast<void*>(static_cast<std::uintptr_t>(address));
    const bool complete = file.read_exactly(bytes, header.length());
    note_written_memory(static_cast<std::uint64_t>(address), header.length());
    note_written_program(static_cast<std::uint64_t>(address), header.length());
    return complete ? nullptr : message::disk_i_o_error;
}

}  // namespace

void do_bsave(Cursor& cursor) {
    ++cursor;
    const FileName name = read_file_name(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const std::int64_t address = evaluate_integer(cursor);
    if (error_pending() || !expect_comma(cursor)) return;
    const std::int64_t length = evaluate_integer(cursor);
    if (error_pending()) return;
    if (address < 1 || length < 1 || length > max_image_length) {
        raise(message::illegal_function_call);
        return;
    }
    if (const char* failure = write_image(name, address, length)) raise(failure);
}

void do_bload(Cursor& cursor) {
    ++cursor;
    const FileName name = read_file_name(cursor);
    if (error_pending()) return;
    const bool address_given = accept(cursor, ',');
    const std::int64_t address = address_given ? evaluate_integer(cursor) : 0;
    if (error_pending()) return;
    if (const char* failure = read_image(name, address_given, address)) raise(failure);
}

}  // namespace korvane
