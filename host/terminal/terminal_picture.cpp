#include "terminal_picture.h"

#include <algorithm>
#include <optional>

#include "code_page.h"
#include "unicode.h"

namespace korvane::host {
namespace {

constexpr Cell outside = {U' ', 0, 0, true};  // terminal cells beyond the screen

constexpr std::uint32_t line_ink = 0x000000;
constexpr std::uint32_t line_paper = 0xAAAAAA;

void append_number(std::string& bytes, std::uint32_t number) {
    bytes += std::to_string(number);
}

void append_position(std::string& bytes, std::uint32_t row, std::uint32_t column) {
    bytes += "\x1b[";
    append_number(bytes, row + 1);
    bytes += ';';
    append_number(bytes, column + 1);
    bytes += 'H';
}

// Where a view of `length` cells must begin to show cell `focus` of `total` and, as far as there is room, a
// quarter of the view on either side of it, moving as little as possible.
std::uint32_t scrolled_start(std::uint32_t start, std::uint32_t length, std::uint32_t total,
                             std::uint32_t focus) {
    if (total <= length) return 0;
    const std::uint32_t margin = length / 4;
    if (focus < start + margin) start = focus - std::min(focus, margin);
    if (focus + margin >= start + length) start = focus + margin - length + 1;
    return std::min(start, total - length);
}

}  // namespace

void TerminalPicture::set_line(std::string_view text) {
    line_.clear();
    for (std::size_t at = 0; at < text.size();) {
        const auto character = decode_utf8(text, at);
        if (!character) ++at;
        line_ += character && *character >= U' ' ? *character : U'?';
    }
}

std::string TerminalPicture::update(const Pixels& pixels, TerminalSize size) {
    if (size.columns == 0 || size.rows == 0) return {};
    read_screen(pixels);
    lines_ = line_.empty() || size.rows == 1 ? 0 : 1;
    std::string bytes;
    if (shown_.empty() || shown_size_ != size) {
        shown_.assign(std::size_t{size.columns} * size.rows, shown_cell(outside, look_));
        shown_size_ = size;
        bytes = redraw_all();
    }
    move_view(size);
    bytes += draw_changes(size);
    return bytes;
}

// Takes the screen over cell by cell and notes the last one that changed.
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
    view_row_ = scrolled_start(view_row_, size.rows - lines_, rows_, focus_row_);
}

std::string TerminalPicture::redraw_all() const {
    std::string bytes = "\x1b[0m";
    append_colour(bytes, true, shown_cell(outside, look_).paper, look_);
    return bytes + "\x1b[2J";
}

// What a cell of the terminal is to show.
Cell TerminalPicture::wanted_cell(std::uint32_t row, std::uint32_t column) const {
    if (row < lines_) {
        const char32_t character = column < line_.size() ? line_[column] : U' ';
        return {character, line_ink, line_paper, true};
    }
    row += view_row_ - lines_;
    column += view_column_;
    return row < rows_ && column < columns_ ? screen_[std::size_t{row} * columns_ + column] : outside;
}

std::string TerminalPicture::draw_changes(TerminalSize size) {
    std::string bytes;
    std::optional<std::uint32_t> ink;
    std::optional<std::uint32_t> paper;
    for (std::uint32_t row = 0; row < size.rows; ++row) {
        std::optional<std::uint32_t> cursor;  // the terminal's column, once it is known to be in this row
        for (std::uint32_t column = 0; column < size.columns; ++column) {
            const Cell cell = shown_cell(wanted_cell(row, column), look_);
            Cell& shown = shown_[std::size_t{row} * size.columns + column];
            if (cell == shown) continue;
            shown = cell;
            if (cursor != column) append_position(bytes, row, column);
            if (ink != cell.ink) append_colour(bytes, false, *(ink = cell.ink), look_);
            if (paper != cell.paper) append_colour(bytes, true, *(paper = cell.paper), look_);
            append_utf8(bytes, cell.character);
            cursor = column + 1;
        }
    }
    return bytes;
}

}  // namespace korvane::host
