#pragma once

#include <cstdint>
#include <string_view>

#include "explorer/line_text.h"

namespace korvane {

// Explorer output goes to the console directly: it is never routed to a file or a numbered window.
void print(std::string_view text);

// Prints the text and ends the line.
void print_line(std::string_view text = {});
void print_line(const char* text);
void print_line(const LineText& line);

// Pauses a dump or a list of findings with "-- press any key --" after every so many lines.
class LinePager {
  public:
    // `page` is the number of lines between two pauses; 0 means no pauses.
    explicit LinePager(std::uint32_t page) : page_(page) {}

    // Called before each line: pauses only while more lines follow, so never after the last one.
    void before_line();

    // Called after each line: pauses as soon as the page is full.
    void after_line();

  private:
    std::uint32_t page_;
    std::uint32_t lines_ = 0;
};

// Lines between two pauses of a memory dump: the rows of the text area less 5, or 16 with fewer than 9 rows.
std::uint32_t dump_page();

// Lines between two pauses of sector dumps, hunts and comparisons: the rows of the text area less 5, or none
// with fewer than 9 rows.
std::uint32_t finding_page();

// A report of any length, printed a screenful at a time: each pause shows "-- press any key; ESC aborts --",
// because what is listed (a file, a directory) can be far longer than anyone wants to see.
class PagedReport {
  public:
    PagedReport();

    // Prints a line, after a pause when the page is full; a line wider than the text area counts as the rows
    // it takes. False when the user ended the listing, from then on without printing.
    bool line(std::string_view text);
    bool line(const char* text);
    bool line(const LineText& text) { return line(text.view()); }

    // Prints one row of running text, at most as wide as the text area. Unlike line(), a text that fills its
    // row is not followed by an empty row.
    bool row(std::string_view text);

    std::uint32_t columns() const { return columns_; }  // of the text area, at least 1
    bool aborted() const { return aborted_; }

  private:
    bool make_room(std::uint32_t rows);

    std::uint32_t columns_;
    std::uint32_t page_;
    std::uint32_t rows_ = 0;  // since the last pause
    bool aborted_ = false;
};

}  // namespace korvane
