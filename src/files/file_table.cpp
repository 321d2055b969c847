#include "files/file_table.h"

#include <algorithm>

#include "platform/memory.h"
#include "program/errors.h"
#include "program/messages.h"

namespace korvane {

FileTable file_table;

namespace {

// Everything but the buffers, whose content the counters declare void.
void reset_entry(OpenFile& file) {
    file.handle = nullptr;
    file.mode = FileMode::input;
    file.column = 0;
    file.pending = 0;
    file.written = 0;
    file.write_failed = false;
    file.input_next = 0;
    file.input_count = 0;
    file.consumed = 0;
    file.end_of_file = false;
    file.record_length = 0;
    file.last_record = 0;
    file.record_counter = 0;
    file.buffer_position = 0;
}

void put_into_record(OpenFile& file, std::uint8_t byte) {
    if (file.buffer_position == file.record_length) {
        raise(message::field_overflow);
        return;
    }
    file.record[file.buffer_position++] = byte;
    ++file.column;
}

}  // namespace

void initialize_file_table() {
    for (OpenFile& file : file_table.entries) {
        reset_entry(file);
        fill_bytes(file.record, 0, sizeof file.record);
    }
}

void attach_file(OpenFile& file, FileHandle handle, FileMode mode, std::uint32_t record_length) {
    reset_entry(file);
    file.handle = handle.release();
    file.mode = mode;
    file.record_length = record_length;
    fill_bytes(file.record, 0, record_length);
}

void file_put_byte(OpenFile& file, std::uint8_t byte) {
    if (file.mode == FileMode::random) {
        put_into_record(file, byte);
        return;
    }
    if (file.pending == output_buffer_size && !flush_output(file)) {
        raise(message::disk_i_o_error);
        return;
    }
    file.output[file.pending++] = byte;
    ++file.written;
    ++file.column;
}

void file_end_line(OpenFile& file) {
    file_put_byte(file, '\r');
    file_put_byte(file, '\n');
    file.column = 0;
}

bool flush_output(OpenFile& file) {
    if (file.pending == 0) return true;
    const auto wanted = static_cast<std::uint64_t>(file.pending);
    std::uint64_t done = wanted;
    file.pending = 0;
    if (!file.write_failed) file.write_failed = !write_file(file.handle, file.output, done) || done != wanted;
    return !file.write_failed;
}

void close_file(OpenFile& file) {
    if (file.handle == nullptr) return;
    flush_output(file);
    file.handle->Close(file.handle);
    file.handle = nullptr;
}

void close_all_files() {
    for (OpenFile& file : file_table.entries)
        close_file(file);
}

}  // namespace korvane
