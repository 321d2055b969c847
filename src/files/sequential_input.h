// Reading sequential files: INPUT #, LINE INPUT # and the functions EOF, LOC, LOF and INPUT$.
//
// A text line ends at CR, at LF or at CR LF, so that files written by other systems read the same. Reading
// fetches blocks from the firmware, never single bytes.
#pragma once

#include <cstdint>

#include "core/token.h"
#include "files/file_table.h"
#include "values/value.h"

namespace korvane {

// The next byte of an input file, or -1 at its end. A failing read counts as the end of the file.
std::int32_t file_get_byte(OpenFile& file);

// The same without taking the byte.
std::int32_t file_peek_byte(OpenFile& file);

// What EOF, LOC and LOF give for an open file; docs/files.md says what they mean in each mode.
bool file_at_end(OpenFile& file);
std::int64_t file_location(const OpenFile& file);
std::int64_t file_length(OpenFile& file);  // raises "Disk I/O error"

// INPUT$(count, #n): exactly `count` bytes as a new string. `count` outside 0 to 32767 is "Illegal function
// call", a file not opened for input or random access "Bad file mode", too few bytes left "Input past end".
Value file_read_string(OpenFile& file, std::int64_t count);

// INPUT #n, var[, var...]. The cursor stands on INPUT.
void do_input_file(Cursor& cursor);

// LINE INPUT #n, var$. The cursor stands on LINE.
void do_line_input_file(Cursor& cursor);

}  // namespace korvane
