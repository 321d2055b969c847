#include "image/create_efi.h"

#include <algorithm>

#include "files/file_handle.h"
#include "files/named_files.h"
#include "files/own_image.h"
#include "image/image_blocks.h"
#include "image/packed_program.h"
#include "platform/firmware.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/program_store.h"
#include "screen/console.h"
#include "statements/files/file_name.h"

namespace korvane {

namespace {

// Reads the whole image file. It may carry a packed program already: that becomes dead bytes, because only
// the last trailer counts.
bool read_image(const FileHandle& image, const PoolBuffer& copy) {
    std::uint64_t done = 0;
    for (std::uint64_t at = 0; at < copy.size(); at += done) {
        done = std::min<std::uint64_t>(copy.size() - at, image_block_size);
        if (!image.read(copy.data() + at, done) || done == 0) return false;
    }
    return true;
}

bool write_number(ImageWriter& writer, std::uint32_t number) {
    return writer.write(&number, sizeof number);
}

bool write_line(ImageWriter& writer, std::uint32_t number, std::string_view text) {
    return write_number(writer, number) && write_number(writer, static_cast<std::uint32_t>(text.size())) &&
           writer.write(text.data(), text.size());
}

// Writes the packed program and the trailer.
bool write_packed_program(const FileHandle& output) {
    ImageWriter writer(output);
    if (!writer.write(packed_magic, sizeof packed_magic - 1) || !write_number(writer, program.count))
        return false;
    std::uint64_t length = packed_header_size;
    for (std::uint32_t i = 0; i < program.count; ++i) {
        const std::string_view text = line_text(i);
        if (!write_line(writer, program.lines[i].number, text)) return false;
        length += packed_line_head_size + text.size();
    }
    return writer.write(packed_trailer_magic, sizeof packed_trailer_magic - 1) &&
           writer.write(&length, sizeof length) && writer.finish();
}

// Writes the standalone image. Null, or the message of what went wrong; no file is open then.
const char* create_image(const FileName& name) {
    FileHandle image = open_own_image();
    if (!image) return message::file_not_found;
    std::uint64_t size = 0;
    if (!image.find_size(size) || static_cast<std::int64_t>(size) <= 0 || !image.set_position(0))
        return message::disk_i_o_error;
    // Nothing is given up for the output before everything that goes into it is there.
    const PoolBuffer copy(size);
    if (!copy) return message::out_of_memory;
    if (!read_image(image, copy)) return message::disk_i_o_error;
    image.close();

    FileHandle output = OpenFileByName(name.view(), OpenMode::create);
    if (!output) return message::bad_file_name;
    const bool written = write_all(output, copy.data(), size) && write_packed_program(output);
    output.close();
    if (written) return nullptr;
    DeleteFileByName(name.view());
    return message::disk_i_o_error;
}

}  // namespace

void do_createefi(Cursor& cursor) {
    if (execution.program_running) {
        raise(message::illegal_direct);
        return;
    }
    if (program.count == 0) {
        raise(message::no_program);
        return;
    }
    ++cursor;
    FileName name = read_file_name(cursor);
    if (error_pending()) return;
    if (name.length == 0) {
        raise(message::bad_file_name);
        return;
    }
    if (!name.add_default_extension(".efi")) return;
    if (const char* failure = create_image(name)) {
        raise(failure);
        return;
    }
    con_put_string("Created ");
    con_put_text(name.view());
    con_put_char(carriage_return);
}

}  // namespace korvane
