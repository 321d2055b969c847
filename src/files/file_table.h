// The table behind file numbers 1 to 15, and the byte writer of sequential output.
//
// Sequential output collects in the entry's 512-byte buffer and reaches the volume when that is full or the
// file is closed. Output to a random file goes into its record buffer, which PUT writes.
#pragma once

#include <cstdint>

#include "files/file_handle.h"

namespace korvane {

inline constexpr std::int64_t max_file_number = 15;
inline constexpr std::uint32_t output_buffer_size = 512;
inline constexpr std::uint32_t input_buffer_size = 4096;
inline constexpr std::uint32_t max_record_length = 32767;
inline constexpr std::uint32_t default_record_length = 128;

enum class FileMode : std::uint8_t { input = 0, output = 1, append = 2, random = 3 };

struct OpenFile {
    uefi::FileProtocol* handle;  // null while the number is closed; owned by the entry
    FileMode mode;

    // Sequential output
    std::uint32_t column;   // characters since the last line end, as TAB and print zones count them
    std::int32_t pending;   // bytes waiting in `output`
    std::uint64_t written;  // bytes sent to the file since OPEN, pending ones included
    bool write_failed;      // from then on nothing is written: the file stays without a gap
    std::uint8_t output[output_buffer_size];

    // Sequential input
    std::uint32_t input_next;   // next unread byte of `input`
    std::uint32_t input_count;  // bytes in `input`
    std::uint64_t consumed;     // bytes handed out since OPEN
    std::uint8_t input[input_buffer_size];

    // Records
    bool end_of_file;                        // input: nothing more comes; random: the last GET came up short
    std::uint32_t record_length;             // 1 to 32767; 0 for sequential files
    std::uint32_t last_record;               // record of the last GET or PUT; 0 after OPEN
    std::uint32_t record_counter;            // what LOC reports for a random file
    std::uint32_t buffer_position;           // where the next output byte goes in `record`
    std::uint8_t record[max_record_length];  // the current record; field variables point into it
};

struct FileTable {
    OpenFile entries[max_file_number];  // file number n is entries[n - 1]
};
extern FileTable file_table;

// Start-up: every number closed.
void initialize_file_table();

// Gives a closed entry its file: counters, buffers and the first `record_length` bytes of the record are
// cleared. `record_length` is 0 for sequential modes.
void attach_file(OpenFile& file, FileHandle handle, FileMode mode, std::uint32_t record_length);

// Writes one byte as it is. The column counts it, whatever it is. Raises "Disk I/O error" when a full buffer
// cannot be written (its bytes are lost) and "Field overflow" past the end of a record.
void file_put_byte(OpenFile& file, std::uint8_t byte);

// Ends a line of text: bytes 13 and 10, column 0.
void file_end_line(OpenFile& file);

// Writes pending output of a sequential file. False when the firmware could not write all of it, now or once
// before; the bytes are given up either way.
bool flush_output(OpenFile& file);

// Closes one number: pending output is written, without looking at the result. A closed number is left alone.
void close_file(OpenFile& file);
void close_all_files();

}  // namespace korvane
