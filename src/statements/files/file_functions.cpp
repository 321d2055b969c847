#include "statements/files/file_functions.h"

#include <algorithm>

#include "files/file_handle.h"
#include "files/file_table.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "screen/keyboard.h"
#include "statements/files/file_number.h"
#include "statements/files/sequential_input.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

constexpr std::uint64_t location_block = 128;  // bytes, the disk sector of early microcomputers

// "([#]n)", or null after an error.
OpenFile* read_file_argument(Cursor& cursor) {
    if (!expect(cursor, '(', message::expected_left_parenthesis)) return nullptr;
    OpenFile* file = lookup_file(cursor, true);
    if (file == nullptr || !expect(cursor, ')', message::expected_right_parenthesis)) return nullptr;
    return file;
}

std::uint64_t bytes_since_open(const OpenFile& file) {
    return file.mode == FileMode::input ? file.consumed : file.written;
}

Value integer_result(std::uint64_t number) {
    return Value::of_integer(static_cast<std::int64_t>(number));
}

// Fills `to` from the file. Raises "Input past end" when it does not hold so much.
void read_from_file(OpenFile& file, std::uint8_t* to, std::uint64_t count) {
    while (count != 0) {
        const std::span<const std::uint8_t> bytes = unread_bytes(file);
        if (bytes.empty()) {
            raise(message::input_past_end);
            return;
        }
        const std::size_t size = std::min<std::size_t>(bytes.size(), count);
        copy_bytes(to, bytes.data(), size);
        take_bytes(file, size);
        to += size;
        count -= size;
    }
}

// Fills `to` with keys. False when Escape, which is consumed, asks for a break.
bool read_from_keyboard(std::uint8_t* to, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        const std::int32_t key = key_get_nowait();
        if (key != no_key) {
            to[done++] = static_cast<std::uint8_t>(key);
        } else if (keyboard.look_ahead == break_pending) {
            key_break_check();
            return false;
        }
    }
    return true;
}

// The arguments of INPUT$: `file` stays null without a file number. False after an error.
bool read_input_arguments(Cursor& cursor, std::int64_t& count, OpenFile*& file) {
    if (!expect(cursor, '(', message::expected_left_parenthesis)) return false;
    count = evaluate_integer(cursor);
    if (error_pending()) return false;
    if (accept(cursor, ',')) {
        file = lookup_input_file(cursor);
        if (file == nullptr) return false;
    }
    if (!expect(cursor, ')', message::expected_right_parenthesis)) return false;
    if (count >= 0 && count <= UINT32_MAX) return true;
    raise(message::illegal_function_call);
    return false;
}

}  // namespace

Value function_eof(Cursor& cursor) {
    OpenFile* file = read_file_argument(cursor);
    if (file == nullptr) return Value::nothing();
    switch (file->mode) {
        case FileMode::input:
            return Value::of_truth(unread_bytes(*file).empty());
        case FileMode::random:
            return Value::of_truth(file->end_of_file);
        case FileMode::output:
        case FileMode::append:
            break;
    }
    return Value::of_truth(true);
}

Value function_loc(Cursor& cursor) {
    const OpenFile* file = read_file_argument(cursor);
    if (file == nullptr) return Value::nothing();
    if (file->mode == FileMode::random) return integer_result(file->record_counter);
    return integer_result((bytes_since_open(*file) + location_block - 1) / location_block);
}

Value function_lof(Cursor& cursor) {
    const OpenFile* file = read_file_argument(cursor);
    if (file == nullptr) return Value::nothing();
    std::uint64_t size = 0;
    if (!find_file_size(file->handle, size)) raise(message::disk_i_o_error);
    return integer_result(size + static_cast<std::uint64_t>(file->pending));
}

Value function_input_string(Cursor& cursor) {
    std::int64_t count = 0;
    OpenFile* file = nullptr;
    if (!read_input_arguments(cursor, count, file)) return Value::nothing();
    const auto length = static_cast<std::uint32_t>(count);
    std::uint8_t* bytes = allocate_string(length);
    if (error_pending()) return Value::nothing();
    if (file != nullptr) {
        read_from_file(*file, bytes, length);
    } else if (!read_from_keyboard(bytes, length)) {
        // A statement that is broken off again and again must not use up string space.
        arenas.FREETOP += length;
        request_break();
        return Value::nothing();
    }
    return Value::of_string(bytes, length);
}

}  // namespace korvane
