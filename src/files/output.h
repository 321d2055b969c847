// Routed output: where PRINT, WRITE and the listings of values send their characters.
//
// A character goes to the current output file, else to the current numbered window, else to the console. The
// statement that prints sets at most one of the two for as long as it runs. Error messages are never routed.
#pragma once

#include <cstdint>
#include <string_view>

#include "files/file_table.h"
#include "numbers/value.h"
#include "screen/text_windows.h"

namespace korvane {

struct Output {
    OpenFile* file;      // current output file, or null
    TextWindow* window;  // current numbered window, or null
};
extern Output output;

// Clears the routing when the statement that set it ends, on its error exits too.
class OutputRouting {
  public:
    OutputRouting() { output = Output{}; }
    ~OutputRouting() { output = Output{}; }
    OutputRouting(const OutputRouting&) = delete;
    OutputRouting& operator=(const OutputRouting&) = delete;
};

// Sends one character. Carriage return (13) ends the line; to a file it becomes the bytes 13 and 10. A file
// may raise "Disk I/O error" or "Field overflow".
void out_put_char(std::uint8_t code);

// Sends a text character by character; a file's error ends it early.
void out_put_text(std::string_view text);

// Sends a value in its free form: a string's bytes; a number with its sign place and a trailing blank.
void print_value(const Value& value);

// Sends this many blanks, none for a negative count; a file's error ends them early.
void out_put_blanks(std::int64_t count);

// The output column, counted from 0: the file's column counter, else the cursor's distance from the left edge
// of the numbered window, of the text window or of the screen.
std::uint32_t out_column();

// Columns of a line of output, at least 1: 255 for a file, else the width of the numbered window or of the
// text area.
std::uint32_t out_width();

// A line end, unless the column is 0.
void print_newline_if_needed();

}  // namespace korvane
