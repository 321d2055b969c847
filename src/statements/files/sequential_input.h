// Reading files piece by piece: INPUT # and LINE INPUT #, and what the file functions need.
//
// A text line ends at CR, at LF or at CR LF, so that files written by other systems read the same. Reading
// fetches blocks from the firmware, never single bytes. From a random file these read the record that GET
// fetched, starting at its first byte.
#pragma once

#include <cstdint>
#include <span>

#include "files/file_table.h"
#include "program/token.h"

namespace korvane {

// The bytes at hand, fetched first when there are none; empty at the end of the file or record. Raises "Disk
// I/O error" when the firmware cannot read.
std::span<const std::uint8_t> unread_bytes(OpenFile& file);

// Takes the first `count` of the bytes at hand.
void take_bytes(OpenFile& file, std::size_t count);

// A file number for reading: what lookup_file() raises, and "Bad file mode" for output and append. Null after
// an error.
OpenFile* lookup_input_file(Cursor& cursor);

// INPUT #n, var[, var...], the cursor on INPUT. Items are separated by commas and line ends, numbers also by
// blanks; a text in double quotes may contain all of these. Raises "Input past end", "Type mismatch" for a
// number that is none, "Bad file number", "Bad file mode", "Expected ," and what assigning raises.
void do_input_file(Cursor& cursor);

// LINE INPUT #n, var$, the cursor on LINE: a whole line without its end, of any length that fits in string
// space. Raises as do_input_file().
void do_line_input_file(Cursor& cursor);

}  // namespace korvane
