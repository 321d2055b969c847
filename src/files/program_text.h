// Program text files: one numbered line per text line.
//
// SAVE writes each line as its number in decimal, a blank, the text as it is kept for listing, CR LF. Reading
// takes CR, LF or CR LF as a line end, keeps the first 299 characters of a line, ignores empty lines and
// enters every line like one typed at the keyboard.
#pragma once

#include <cstdint>
#include <string_view>

#include "files/file_handle.h"

namespace korvane {

inline constexpr std::uint32_t max_file_line = 299;  // characters kept of a line, its number included

// Cuts a stream of bytes into text lines.
class LineAssembler {
  public:
    // Takes one byte. True when it ended a line that is not empty;
    // the line is then in line() until the next call.
    bool add(char byte);

    // The end of the file: true when a last line without a line end is in line().
    bool finish();

    std::string_view line() const { return {text_, length_}; }

  private:
    char text_[max_file_line];
    std::uint32_t length_ = 0;
    bool complete_ = false;  // line() has been handed out; the next byte starts a new one
};

// A text line cut into its line number and the rest:
// leading blanks are skipped, and one blank behind the number.
struct NumberedLine {
    std::uint32_t number;
    std::string_view text;
};

// Null, or the message of what is wrong: "Direct statement in file" (no number) or "Line number too large"
// (above 4294967294). Raises nothing.
const char* split_program_line(std::string_view line, NumberedLine& numbered);

// Opens a program text file for reading. Empty on any failure and for a directory; raises nothing.
FileHandle open_program(std::string_view name);

// Stores the lines of an open file, replacing lines of the same number. Stops at the first error: what
// split_program_line() and store_line() raise, and "Disk I/O error" when the firmware cannot read; the lines
// before it stay stored, and the file is closed before the error is raised.
void read_program_text(FileHandle file);

// Writes the program up to the first piece that cannot be written whole, so that the file is a beginning of
// it. False when that is not all of it; nothing is raised.
bool write_program_text(const FileHandle& file);

}  // namespace korvane
