#include "statements/files/sequential_input.h"

#include <algorithm>
#include <string_view>

#include "files/file_handle.h"
#include "platform/characters.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "statements/files/file_number.h"
#include "values/item_value.h"
#include "values/variables.h"

namespace korvane {

namespace {

constexpr std::int32_t end_of_input = -1;

// Text being read, of unknown length. It collects at the bottom of the free data memory without being
// allocated there, and may take all of it.
class CollectedText {
  public:
    CollectedText()
        : bytes_(arenas.FREEBOT), capacity_(std::min<std::uint64_t>(free_data_bytes(), UINT32_MAX)) {}

    // Raises "Out of string space" when the text would outgrow its place.
    void append(std::span<const std::uint8_t> bytes) {
        if (bytes.size() > capacity_ - length_) {
            raise(message::out_of_string_space);
            return;
        }
        copy_bytes(bytes_ + length_, bytes.data(), bytes.size());
        length_ += bytes.size();
    }

    void remove_trailing_blanks() {
        while (length_ != 0 && is_blank(bytes_[length_ - 1]))
            --length_;
    }

    std::string_view view() const { return {reinterpret_cast<const char*>(bytes_), length_}; }

  private:
    std::uint8_t* bytes_;
    std::uint64_t capacity_;
    std::uint64_t length_ = 0;
};

void fetch_block(OpenFile& file) {
    std::uint64_t size = input_buffer_size;
    if (!read_file(file.handle, file.input, size)) raise(message::disk_i_o_error);
    file.input_next = 0;
    file.input_count = static_cast<std::uint32_t>(size);
}

std::int32_t peek_byte(OpenFile& file) {
    const std::span<const std::uint8_t> bytes = unread_bytes(file);
    return bytes.empty() ? end_of_input : bytes[0];
}

// Skips the bytes for which `is_skipped` holds.
void skip_while(OpenFile& file, bool (*is_skipped)(std::uint32_t)) {
    while (is_skipped(static_cast<std::uint32_t>(peek_byte(file))))
        take_bytes(file, 1);
}

// Takes one line end, if the file stands at one; CR LF is one.
void take_line_end(OpenFile& file) {
    const std::int32_t byte = peek_byte(file);
    if (!is_line_break(static_cast<std::uint32_t>(byte))) return;
    take_bytes(file, 1);
    if (byte == '\r' && peek_byte(file) == '\n') take_bytes(file, 1);
}

// Collects bytes up to the first for which `ends` holds, which stays unread, or to the end of the file.
void collect_until(OpenFile& file, bool (*ends)(std::uint32_t), CollectedText& text) {
    for (;;) {
        const std::span<const std::uint8_t> bytes = unread_bytes(file);
        if (bytes.empty() || error_pending()) return;
        const auto end = std::find_if(bytes.begin(), bytes.end(), ends);
        const auto count = static_cast<std::size_t>(end - bytes.begin());
        text.append(bytes.first(count));
        take_bytes(file, count);
        if (end != bytes.end() || error_pending()) return;
    }
}

// Collects one item and takes the separator behind it.
void read_item(OpenFile& file, Type type, CollectedText& text) {
    skip_while(file, [](std::uint32_t byte) { return is_blank(byte) || is_line_break(byte); });
    const std::int32_t first = peek_byte(file);
    if (first == end_of_input) {
        raise(message::input_past_end);
        return;
    }
    if (type == Type::STRING && first == '"') {
        take_bytes(file, 1);
        collect_until(
            file, [](std::uint32_t byte) { return byte == '"'; }, text);
        if (peek_byte(file) == '"') take_bytes(file, 1);
    } else if (type == Type::STRING) {
        collect_until(
            file, [](std::uint32_t byte) { return byte == ',' || is_line_break(byte); }, text);
        text.remove_trailing_blanks();
    } else {
        collect_until(
            file, [](std::uint32_t byte) { return byte == ',' || is_blank(byte) || is_line_break(byte); },
            text);
    }
    skip_while(file, is_blank);
    if (peek_byte(file) == ',')
        take_bytes(file, 1);
    else
        take_line_end(file);
}

// Stores the text as an item. False when it is no number but has to be one.
bool store_collected(const Reference& place, std::string_view text) {
    if (place.type != Type::STRING) return store_item(place, text);
    // The string's place reaches into the collected text when that fills more than half of the free memory.
    std::uint8_t* bytes = allocate_string(text.size());
    if (error_pending()) return true;
    move_bytes(bytes, text.data(), text.size());
    const auto length = static_cast<std::uint32_t>(text.size());
    write_unaligned(place.storage, StringDescriptor{.length = length, .zero = 0, .bytes = bytes});
    return true;
}

void input_variable(OpenFile& file, Cursor& cursor) {
    const Reference place = resolve_reference(cursor);
    if (error_pending()) return;
    CollectedText text;
    read_item(file, place.type, text);
    if (error_pending()) return;
    if (!store_collected(place, text.view())) raise(message::type_mismatch);
}

// Where the next byte comes from: in the record, or in the file.
std::uint64_t input_position(const OpenFile& file) {
    return file.mode == FileMode::random ? file.buffer_position : file.consumed;
}

[[gnu::cold]] void go_back(OpenFile& file, std::uint64_t position) {
    if (file.mode == FileMode::random) {
        file.buffer_position = static_cast<std::uint32_t>(position);
        return;
    }
    // Where the firmware refuses, reading goes on behind what has been read.
    if (file.consumed == position || !set_file_position(file.handle, position)) return;
    file.consumed = position;
    file.input_next = 0;
    file.input_count = 0;
}

// "#n," of both statements.
OpenFile* read_file_prefix(Cursor& cursor) {
    OpenFile* file = lookup_input_file(cursor);
    return file != nullptr && expect_comma(cursor) ? file : nullptr;
}

}  // namespace

std::span<const std::uint8_t> unread_bytes(OpenFile& file) {
    if (file.mode == FileMode::random) {
        return std::span(file.record)
            .subspan(file.buffer_position, file.record_length - file.buffer_position);
    }
    if (file.input_next == file.input_count) fetch_block(file);
    return std::span(file.input).subspan(file.input_next, file.input_count - file.input_next);
}

void take_bytes(OpenFile& file, std::size_t count) {
    if (file.mode == FileMode::random) {
        file.buffer_position += static_cast<std::uint32_t>(count);
        return;
    }
    file.input_next += static_cast<std::uint32_t>(count);
    file.consumed += count;
}

OpenFile* lookup_input_file(Cursor& cursor) {
    OpenFile* file = lookup_file(cursor, true);
    if (file == nullptr || file->mode == FileMode::input || file->mode == FileMode::random) return file;
    raise(message::bad_file_mode);
    return nullptr;
}

void do_input_file(Cursor& cursor) {
    ++cursor;
    OpenFile* file = read_file_prefix(cursor);
    if (file == nullptr) return;
    const std::uint64_t start = input_position(*file);
    do {
        input_variable(*file, cursor);
    } while (!error_pending() && accept(cursor, ','));
    // Executed again after a break, the statement reads the same items.
    if (break_requested()) go_back(*file, start);
}

void do_line_input_file(Cursor& cursor) {
    cursor += 2;
    OpenFile* file = read_file_prefix(cursor);
    if (file == nullptr) return;
    const Reference place = resolve_reference(cursor);
    if (error_pending()) return;
    if (place.type != Type::STRING) {
        raise(message::type_mismatch);
        return;
    }
    if (unread_bytes(*file).empty()) {
        raise(message::input_past_end);
        return;
    }
    CollectedText text;
    collect_until(*file, is_line_break, text);
    if (error_pending()) return;
    store_collected(place, text.view());
    take_line_end(*file);
}

}  // namespace korvane
