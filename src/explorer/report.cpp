#include "explorer/report.h"

#include <algorithm>

#include "screen/console.h"
#include "screen/pager.h"

namespace korvane {
namespace {

constexpr std::uint32_t fewest_rows_for_paging = 9;
constexpr std::uint32_t rows_kept_in_view = 5;  // of the page before, the prompt included
constexpr std::uint32_t page_on_small_screens = 16;

std::uint32_t text_area_rows() {
    const CellRectangle area = con_text_area();
    return area.bottom < area.top ? 0 : area.bottom - area.top + 1;
}

std::uint32_t text_area_columns() {
    const CellRectangle area = con_text_area();
    return area.right < area.left ? 1 : area.right - area.left + 1;
}

}  // namespace

void print(std::string_view text) {
    con_put_text(text);
    // What the explorer reads next may be the screen.
    bring_up_to_date();
}

void print_line(std::string_view text) {
    con_put_text(text);
    con_put_char(carriage_return);
    bring_up_to_date();
}

void print_line(const char* text) {
    print_line(std::string_view(text));
}

void print_line(const LineText& line) {
    print_line(line.view());
}

void LinePager::before_line() {
    if (page_ != 0 && lines_ == page_) {
        pause_listing();
        lines_ = 0;
    }
    ++lines_;
}

void LinePager::after_line() {
    ++lines_;
    if (page_ != 0 && lines_ == page_) {
        pause_listing();
        lines_ = 0;
    }
}

std::uint32_t dump_page() {
    const std::uint32_t rows = text_area_rows();
    return rows < fewest_rows_for_paging ? page_on_small_screens : rows - rows_kept_in_view;
}

std::uint32_t finding_page() {
    const std::uint32_t rows = text_area_rows();
    return rows < fewest_rows_for_paging ? 0 : rows - rows_kept_in_view;
}

PagedReport::PagedReport() : columns_(text_area_columns()), page_(dump_page()) {}

bool PagedReport::make_room(std::uint32_t rows) {
    if (!aborted_ && rows_ != 0 && rows_ + rows > page_) {
        aborted_ = !pause_listing_or_abort();
        rows_ = 0;
    }
    rows_ += rows;
    return !aborted_;
}

bool PagedReport::line(std::string_view text) {
    // A text that exactly fills its rows leaves the cursor on the next row, which the line end then takes.
    if (!make_room(static_cast<std::uint32_t>(text.size() / columns_ + 1))) return false;
    print_line(text);
    return true;
}

bool PagedReport::line(const char* text) {
    return line(std::string_view(text));
}

bool PagedReport::row(std::string_view text) {
    if (!make_room(1)) return false;
    print(text);
    if (text.size() < columns_) con_put_char(carriage_return);
    return true;
}

}  // namespace korvane
