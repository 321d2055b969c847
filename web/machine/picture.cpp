#include "picture.h"

#include <algorithm>
#include <cstring>

#include "code_page.h"
#include "screen_cells.h"

namespace korvane::web {

namespace {

constexpr std::uint32_t cell_height = 16;
constexpr std::uint32_t opaque = 0xFF000000;

// From 0x00RRGGBB to the bytes red, green, blue, 255.
std::uint32_t canvas_colour(std::uint32_t pixel) {
    return opaque | (pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF);
}

}  // namespace

const PictureChange& Picture::update(const host::Display& display) {
    const std::uint32_t width = display.width();
    const std::uint32_t height = display.height();
    if (change_.width != width || change_.height != height) {
        seen_.assign(std::size_t{width} * height, 0xFF000000);  // which no pixel is
        canvas_.assign(std::size_t{width} * height, opaque);
        rows_.assign(height / cell_height, {});
        stale_.assign(height / cell_height, true);
        text_.has_changed = 1;
    }
    std::uint32_t left = width;
    std::uint32_t right = 0;
    std::uint32_t top = height;
    std::uint32_t bottom = 0;
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint32_t* now = display.pixels().data() + std::size_t{y} * display.pitch();
        std::uint32_t* seen = seen_.data() + std::size_t{y} * width;
        if (std::memcmp(now, seen, std::size_t{width} * sizeof *now) == 0) continue;
        const auto first = static_cast<std::uint32_t>(std::mismatch(now, now + width, seen).first - now);
        std::uint32_t end = width;
        while (now[end - 1] == seen[end - 1])
            --end;
        left = std::min(left, first);
        right = std::max(right, end);
        top = std::min(top, y);
        bottom = y + 1;
        std::copy(now + first, now + end, seen + first);
        std::transform(now + first, now + end, canvas_.data() + std::size_t{y} * width + first,
                       canvas_colour);
        if (y / cell_height < stale_.size()) stale_[y / cell_height] = true;
    }
    change_ = {width, height, left, top, 0, 0, reinterpret_cast<std::uint64_t>(canvas_.data())};
    if (bottom > top) {
        change_.columns = right - left;
        change_.rows = bottom - top;
    }
    return change_;
}

// Reads a row's text; true when it has changed. The cursor is a block of the ink's colour: where one stands
// alone between cells of another paper, that is where it is.
bool Picture::read_row(const host::Display&, std::uint32_t row) {
    const host::Pixels pixels{seen_.data(), change_.width, change_.height, change_.width};
    const std::uint32_t columns = host::cell_columns(pixels);
    std::string text;
    std::uint32_t paper = 0;
    for (std::uint32_t column = 0; column < columns; ++column) {
        const host::Cell cell = host::read_cell(pixels, row, column);
        const bool is_plain = cell.is_glyph && cell.ink == cell.paper;
        if (column == 0) paper = host::read_cell(pixels, row, columns - 1).paper;
        if (is_plain && cell.paper != paper) {
            text_.cursor_row = row;
            text_.cursor_column = column;
        }
        host::append_utf8(text, cell.is_glyph ? cell.character : U' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    if (text == rows_[row]) return false;
    rows_[row] = std::move(text);
    return true;
}

const PictureText& Picture::update_text(const host::Display& display) {
    bool has_changed = text_.has_changed != 0 && all_rows_.empty();
    const std::uint32_t old_cursor_row = text_.cursor_row;
    const std::uint32_t old_cursor_column = text_.cursor_column;
    for (std::uint32_t row = 0; row < rows_.size(); ++row) {
        if (!stale_[row]) continue;
        stale_[row] = false;
        has_changed = read_row(display, row) || has_changed;
    }
    if (has_changed) {
        all_rows_.clear();
        for (const std::string& row : rows_)
            all_rows_ += row + '\n';
    }
    text_.text = reinterpret_cast<std::uint64_t>(all_rows_.data());
    text_.length = all_rows_.size();
    text_.columns = change_.width / 8;
    text_.has_changed =
        has_changed || text_.cursor_row != old_cursor_row || text_.cursor_column != old_cursor_column;
    return text_;
}

}  // namespace korvane::web
