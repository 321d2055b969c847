#include "terminal_picture.h"

#include <algorithm>
#include <optional>

#include "code_page.h"

namespace korvane::host {
namespace {

constexpr Cell outside = {U' ', 0, 0, true};  // terminal cells beyond the screen

void append_number(std::string& bytes, std::uint32_t number) {
    bytes += std::to_string(number);
}

void append_colour(std::string& bytes, const char* layer, std::uint32_t colour) {
    bytes += "\x1b[";
    bytes += layer;
    bytes += ";2;";
    append_number(bytes, colour >> 16 & 0xFF);
    bytes += ';';
    append_number(bytes, colour >> 8 & 0xFF);
    bytes += ';';
    append_number(bytes, colour & 0xFF);
    bytes += 'm';
}

void append_position(std::string& bytes, std::uint32_t row, std::uint32_t column) {
    bytes += "\x1b[";
    append_number(bytes, row + 1);
    bytes += ';';
    append_number(bytes, column + 1);
    bytes += 'H';
}

/// Where a view of `length` cells must begin to show cell `focus` of `total`, moving as little as possible.
std::uint32_t scrolled_start(std::uint32_t start, std::uint32_t length, std::uint32_t total,
                             std::uint32_t focus) {
    if (total <= length) return 0;
    if (focus < start) start = focus;
    if (focus >= start + length) start = focus - length + 1;
    return std::min(start, total - length);
}

}  // namespace

std::string TerminalPicture::update(const Pixels& pixels, TerminalSize size) {
    if (size.columns == 0 || size.rows == 0) return {};
    read_screen(pixels);
    std::string bytes;
    if (shown_.empty() || shown_size_ != size) {
        shown_.assign(std::size_t{size.columns} * size.rows, outside);
        shown_size_ = size;
        bytes = redraw_all();
    }
    move_view(size);
    bytes += draw_changes(size);
    return bytes;
}

/// Takes the screen over cell by cell and notes the last one that changed.
void TerminalPicture::read_screen(const Pixels& pixels) {
    const std::uint32_t columns = cell_columns(pixels);
    const std::uint32_t rows = cell_rows(pixels);
    if (columns != columns_ || rows != rows_) {
        columns_ = columns;
        rows_ = rows;
        screen_.assign(std::size_t{columns} * rows, outside);
        focus_column_ = focus_row_ = 0;
        shown_.clear();
    }
    for (std::uint32_t row = 0; row < rows; ++row) {
        for (std::uint32_t column = 0; column < columns; ++column) {
            Cell& known = screen_[std::size_t{row} * columns + column];
            const Cell cell = read_cell(pixels, row, column);
            if (cell == known) continue;
            known = cell;
            focus_column_ = column;
            focus_row_ = row;
        }
    }
}

void TerminalPicture::move_view(TerminalSize size) {
    view_column_ = scrolled_start(view_column_, size.columns, columns_, focus_column_);
    view_row_ = scrolled_start(view_row_, size.rows, rows_, focus_row_);
}

std::string TerminalPicture::redraw_all() const {
    return "\x1b[0;40m\x1b[48;2;0;0;0m\x1b[2J";
}

std::string TerminalPicture::draw_changes(TerminalSize size) {
    std::string bytes;
    std::optional<std::uint32_t> ink;
    std::optional<std::uint32_t> paper;
    for (std::uint32_t row = 0; row < size.rows; ++row) {
        std::optional<std::uint32_t> cursor;  // the terminal's column, once it is known to be in this row
        for (std::uint32_t column = 0; column < size.columns; ++column) {
            const bool inside = view_row_ + row < rows_ && view_column_ + column < columns_;
            const Cell& cell =
                inside ? screen_[std::size_t{view_row_ + row} * columns_ + view_column_ + column] : outside;
            Cell& shown = shown_[std::size_t{row} * size.columns + column];
            if (cell == shown) continue;
            shown = cell;
            if (cursor != column) append_position(bytes, row, column);
            if (ink != cell.ink) append_colour(bytes, "38", *(ink = cell.ink));
            if (paper != cell.paper) append_colour(bytes, "48", *(paper = cell.paper));
            append_utf8(bytes, cell.character);
            cursor = column + 1;
        }
    }
    return bytes;
}

}  // namespace korvane::host
