#include "screen_text.h"

#include <algorithm>
#include <map>
#include <span>

#include "code_page.h"
#include "screen_cells.h"
#include "text_syntax.h"

namespace korvane::transcript {

namespace {

constexpr char32_t full_block = U'█';
constexpr std::uint32_t cell_height = 16;

bool is_plain(const host::Cell& cell) {
    return cell.is_glyph && cell.ink == cell.paper;
}

// Most rows of a screen are of one colour: such a row need not be looked at cell by cell.
bool is_one_colour(const host::Pixels& pixels, std::uint32_t row) {
    const std::uint32_t* first = pixels.words + std::size_t{row} * cell_height * pixels.pitch;
    for (std::uint32_t y = 0; y < cell_height; ++y) {
        const std::uint32_t* line = first + std::size_t{y} * pixels.pitch;
        if (!std::equal(line + (y == 0 ? 1 : 0), line + pixels.width, first)) {
            if (std::any_of(line, line + pixels.width, [=](std::uint32_t pixel) { return pixel != *first; }))
                return false;
        }
    }
    return true;
}

using Row = std::vector<host::Cell>;

std::vector<Row> read_cells(const host::Pixels& pixels) {
    std::vector<Row> cells(host::cell_rows(pixels), Row(host::cell_columns(pixels)));
    for (std::uint32_t row = 0; row < cells.size(); ++row) {
        if (is_one_colour(pixels, row)) {
            std::fill(cells[row].begin(), cells[row].end(), host::read_cell(pixels, row, 0));
            continue;
        }
        for (std::uint32_t column = 0; column < cells[row].size(); ++column)
            cells[row][column] = host::read_cell(pixels, row, column);
    }
    return cells;
}

std::uint32_t most_frequent_colour(const std::vector<Row>& cells) {
    std::map<std::uint32_t, std::size_t> counts;
    for (const Row& row : cells)
        for (const host::Cell& cell : row)
            if (is_plain(cell)) ++counts[cell.paper];
    const auto most = std::max_element(counts.begin(), counts.end(), [](const auto& left, const auto& right) {
        return left.second < right.second;
    });
    return most == counts.end() ? 0 : most->first;
}

bool has_paper(std::span<const host::Cell> neighbours, std::uint32_t colour) {
    const auto text = std::find_if(neighbours.begin(), neighbours.end(),
                                   [](const host::Cell& cell) { return cell.is_glyph && !is_plain(cell); });
    return text != neighbours.end() && text->paper == colour;
}

bool is_full_block(const Row& row, std::size_t column, std::uint32_t page) {
    const host::Cell& cell = row[column];
    if (!is_plain(cell) || cell.paper == page) return false;
    const std::span<const host::Cell> all(row);
    Row to_the_left(row.rend() - static_cast<std::ptrdiff_t>(column), row.rend());
    return !has_paper(to_the_left, cell.paper) && !has_paper(all.subspan(column + 1), cell.paper);
}

}  // namespace

std::size_t ScreenText::used_rows() const {
    std::size_t used = rows.size();
    while (used != 0 && rows[used - 1].empty())
        --used;
    return used;
}

ScreenText read_screen(const host::Display& display, bool find_cursor) {
    const host::Pixels pixels{display.pixels().data(), display.width(), display.height(), display.pitch()};
    const std::vector<Row> cells = read_cells(pixels);
    const std::uint32_t page = most_frequent_colour(cells);

    ScreenText screen;
    screen.columns = host::cell_columns(pixels);
    std::vector<std::u32string> rows;
    for (std::uint32_t row = 0; row < cells.size(); ++row) {
        std::u32string& text = rows.emplace_back();
        for (std::uint32_t column = 0; column < cells[row].size(); ++column) {
            const host::Cell& cell = cells[row][column];
            char32_t character = cell.is_glyph ? cell.character : U' ';
            if (is_full_block(cells[row], column, page)) {
                character = full_block;
                if (find_cursor) screen.cursor = {row, column};
            }
            text += character;
        }
    }
    if (screen.cursor) rows[screen.cursor->row][screen.cursor->column] = U' ';
    for (const std::u32string& row : rows) {
        std::string utf8;
        for (const char32_t character : row)
            host::append_utf8(utf8, character);
        screen.rows.push_back(without_trailing_blanks(std::move(utf8)));
    }
    return screen;
}

}  // namespace korvane::transcript
