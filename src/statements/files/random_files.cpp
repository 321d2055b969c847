#include "statements/files/random_files.h"

#include <algorithm>

#include "files/file_handle.h"
#include "files/file_table.h"
#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "statements/files/file_number.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

namespace {

constexpr std::int64_t max_record_number = 0xFFFFFF;

OpenFile* lookup_random_file(Cursor& cursor) {
    OpenFile* file = lookup_file(cursor, true);
    if (file == nullptr || file->mode == FileMode::random) return file;
    raise(message::bad_file_mode);
    return nullptr;
}

// The width of a field, checked against what is left of the record behind `offset`.
bool read_width(Cursor& cursor, const OpenFile& file, std::uint32_t offset, std::uint32_t& width) {
    const std::int64_t wanted = evaluate_integer(cursor);
    if (error_pending()) return false;
    if (wanted < 0 || wanted > file.record_length - offset) {
        raise(message::field_overflow);
        return false;
    }
    width = static_cast<std::uint32_t>(wanted);
    return true;
}

// "AS s$": the string scalar, created when absent. Null after an error.
VariableEntry* read_field_variable(Cursor& cursor) {
    if (!expect(cursor, KW_AS, message::expected_as)) return nullptr;
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_variable);
        return nullptr;
    }
    if (type_of_name(cursor->name) != Type::STRING || cursor[1].kind == '(') {
        raise(message::type_mismatch);
        return nullptr;
    }
    VariableEntry* variable = find_or_create_scalar(cursor);
    if (variable == nullptr || variable->type == Type::STRING) return variable;
    raise(message::type_mismatch);
    return nullptr;
}

StringDescriptor& descriptor_at(std::uint8_t* storage) {
    return *reinterpret_cast<StringDescriptor*>(storage);
}

bool overlap(const std::uint8_t* first, std::uint64_t first_length, const std::uint8_t* second,
             std::uint64_t second_length) {
    const auto a = reinterpret_cast<std::uintptr_t>(first);
    const auto b = reinterpret_cast<std::uintptr_t>(second);
    return a < b + second_length && b < a + first_length;
}

// Fills the target with blanks and copies the value's first bytes in, flush left or right.
void justify(const StringDescriptor& target, const Value& value, bool to_the_right) {
    const std::uint32_t length = target.length;
    if (length == 0) return;
    const std::uint32_t count = std::min(value.length, length);
    const std::uint8_t* bytes = value.bytes;
    if (overlap(bytes, value.length, target.bytes, length)) {
        std::uint8_t* copy = allocate_string(count);
        if (copy == nullptr) return;
        copy_bytes(copy, bytes, count);
        bytes = copy;
    }
    fill_bytes(target.bytes, ' ', length);
    copy_bytes(target.bytes + (to_the_right ? length - count : 0), bytes, count);
}

void set_justified(Cursor& cursor, bool to_the_right) {
    ++cursor;
    const Reference target = resolve_reference(cursor);
    if (error_pending()) return;
    if (target.type != Type::STRING) {
        raise(message::type_mismatch);
        return;
    }
    if (!expect(cursor, '=', message::expected_equals)) return;
    const Value value = evaluate_string(cursor);
    if (error_pending()) return;
    justify(descriptor_at(target.storage), value, to_the_right);
}

// "[, record]" behind the file number; 0 after an error.
std::uint32_t read_record_number(Cursor& cursor, const OpenFile& file) {
    std::int64_t record = std::int64_t{file.last_record} + 1;
    if (accept(cursor, ',')) record = evaluate_integer(cursor);
    if (error_pending()) return 0;
    if (record < 1 || record > max_record_number) {
        raise(message::bad_record_number);
        return 0;
    }
    return static_cast<std::uint32_t>(record);
}

// The file and record of GET and PUT, with the file positioned at the record. Null after an error.
OpenFile* start_transfer(Cursor& cursor, std::uint32_t& record) {
    ++cursor;
    OpenFile* file = lookup_random_file(cursor);
    if (file == nullptr) return nullptr;
    record = read_record_number(cursor, *file);
    if (record == 0) return nullptr;
    const std::uint64_t position = std::uint64_t{file->record_length} * (record - 1);
    if (set_file_position(file->handle, position)) return file;
    raise(message::disk_i_o_error);
    return nullptr;
}

void finish_transfer(OpenFile& file, std::uint32_t record, bool end_of_file) {
    file.last_record = record;
    file.record_counter = record;
    file.end_of_file = end_of_file;
    file.buffer_position = 0;
}

}  // namespace

void do_field(Cursor& cursor) {
    ++cursor;
    accept(cursor, ',');
    OpenFile* file = lookup_random_file(cursor);
    if (file == nullptr) return;
    accept(cursor, ',');
    std::uint32_t offset = 0;
    do {
        std::uint32_t width = 0;
        if (!read_width(cursor, *file, offset, width)) return;
        VariableEntry* variable = read_field_variable(cursor);
        if (variable == nullptr) return;
        descriptor_at(variable->storage) = StringDescriptor{width, 0, file->record + offset};
        offset += width;
    } while (accept(cursor, ','));
}

void do_lset(Cursor& cursor) {
    set_justified(cursor, false);
}

void do_rset(Cursor& cursor) {
    set_justified(cursor, true);
}

void do_get_record(Cursor& cursor) {
    std::uint32_t record = 0;
    OpenFile* file = start_transfer(cursor, record);
    if (file == nullptr) return;
    fill_bytes(file->record, 0, file->record_length);
    std::uint64_t size = file->record_length;
    // A failing read counts as an empty one: the record shows zero bytes and the end-of-file flag tells.
    read_file(file->handle, file->record, size);
    finish_transfer(*file, record, size < file->record_length);
}

void do_put_record(Cursor& cursor) {
    std::uint32_t record = 0;
    OpenFile* file = start_transfer(cursor, record);
    if (file == nullptr) return;
    std::uint64_t size = file->record_length;
    write_file(file->handle, file->record, size);
    if (size != file->record_length) {
        raise(message::disk_i_o_error);
        return;
    }
    finish_transfer(*file, record, false);
}

}  // namespace korvane
