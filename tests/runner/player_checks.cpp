#include "player.h"

#include <regex.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <tuple>
#include <utility>

#include "machine_builder.h"
#include "screen_cells.h"

namespace korvane::transcript {

namespace {

// The prompt that closes the output of a direct command; transcripts leave it out.
const std::string prompt = "Ready.";

bool matches(const ExpectedRow& expected, const std::string& actual) {
    if (!expected.is_pattern) return expected.text == actual;
    // The C library's own: the C++ library's is compiled anew here, which takes longer than all the rest of
    // the player.
    regex_t pattern;
    if (regcomp(&pattern, ("^(" + expected.text + ")$").c_str(), REG_EXTENDED | REG_NOSUB)) return false;
    const bool found = !regexec(&pattern, actual.c_str(), 0, nullptr, 0);
    regfree(&pattern);
    return found;
}

std::string in_hex(std::uint64_t value) {
    char text[20];
    std::snprintf(text, sizeof text, "%06llX", static_cast<unsigned long long>(value));
    return text;
}

// Bytes of a file as the lines of a transcript would write them.
std::string escape(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '\r')
            text += "\\r";
        else if (byte == '\n')
            text += "\\n\n";
        else if (byte == '\\')
            text += "\\\\";
        else if (code >= 0x20 && code < 0x7F)
            text += byte;
        else
            text += "\\x" + in_hex(code).substr(4);
    }
    return text;
}

std::string row_text(const ExpectedRow& row) {
    return (row.is_pattern ? "~ " : "") + row.text;
}

}  // namespace

void Player::compare(const Step& step, std::vector<std::string> actual, bool prompt_is_implied) {
    const std::vector<ExpectedRow>& expected = step.rows;
    const bool expects_prompt = !expected.empty() && expected.back().text == prompt;
    if (prompt_is_implied && !expects_prompt && !actual.empty() && actual.back() == prompt) actual.pop_back();
    const auto same = [](const std::string& row, const ExpectedRow& wanted) { return matches(wanted, row); };
    if (std::equal(actual.begin(), actual.end(), expected.begin(), expected.end(), same)) return;

    came_out_as_expected_ = false;
    if (tolerant_) return;

    std::string difference = "the rows differ:\n";
    for (std::size_t i = 0; i < std::max(actual.size(), expected.size()); ++i) {
        const bool in_both = i < actual.size() && i < expected.size();
        if (in_both && matches(expected[i], actual[i])) {
            difference += "      " + actual[i] + "\n";
            continue;
        }
        if (i < expected.size()) difference += "    - " + row_text(expected[i]) + "\n";
        if (i < actual.size()) difference += "    + " + actual[i] + "\n";
    }
    fail(difference);
}

void Player::check_rows(const Step& step) {
    const ScreenText& now = screen();
    show(step, now);
    const std::size_t first = step.numbers[0] - 1;
    if (step.numbers[0] == 0 || first + step.rows.size() > now.rows.size())
        fail("the screen has no such rows");
    const auto begin = now.rows.begin() + static_cast<std::ptrdiff_t>(first);
    compare(step, {begin, begin + static_cast<std::ptrdiff_t>(step.rows.size())}, false);
}

void Player::check_pixels(const Step& step) {
    const host::Display& display = *machine_->firmware().display();
    const auto [left, top, right, bottom] =
        std::tuple{step.numbers[0], step.numbers[1], step.numbers[2], step.numbers[3]};
    if (right >= display.width() || bottom >= display.height()) fail("outside the screen");
    for (std::uint64_t y = top; y <= bottom; ++y) {
        for (std::uint64_t x = left; x <= right; ++x) {
            const std::uint32_t colour =
                display.pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) & 0xFFFFFF;
            if (colour != step.numbers[4])
                fail("the pixel at " + std::to_string(x) + ", " + std::to_string(y) + " is " +
                     in_hex(colour) + ", not " + in_hex(step.numbers[4]));
        }
    }
}

void Player::check_colours(const Step& step) {
    const host::Display& display = *machine_->firmware().display();
    const host::Pixels pixels{display.pixels().data(), display.width(), display.height(), display.pitch()};
    if (step.numbers[0] == 0 || step.numbers[0] > host::cell_rows(pixels) || step.numbers[1] == 0 ||
        step.numbers[1] > host::cell_columns(pixels))
        fail("the screen has no such cell");
    const host::Cell cell = host::read_cell(pixels, static_cast<std::uint32_t>(step.numbers[0] - 1),
                                            static_cast<std::uint32_t>(step.numbers[1] - 1));
    if (!cell.is_glyph) fail("the cell shows no character");
    if (cell.ink != step.numbers[2] || cell.paper != step.numbers[3])
        fail("the cell's colours are " + in_hex(cell.ink) + " on " + in_hex(cell.paper));
}

void Player::check_cursor(const Step& step) {
    const ScreenText& now = screen();
    if (!now.cursor) fail("there is no cursor");
    if (now.cursor->row + 1 != step.numbers[0] || now.cursor->column + 1 != step.numbers[1])
        fail("the cursor is at row " + std::to_string(now.cursor->row + 1) + ", column " +
             std::to_string(now.cursor->column + 1));
}

void Player::check_exit(const Step& step) {
    if (last_stop_ != host::Stop::returned) fail("the application has not ended");
    if (machine_->status() != step.numbers[0]) fail("it ended with status " + in_hex(machine_->status()));
    if (machine_->firmware().memory().executable_pages() != 0)
        fail("memory for machine code was not given back");
}

void Player::check_given_back(const Step& step) {
    const host::Display& display = *machine_->firmware().display();
    if (display.width() != step.numbers[0] || display.height() != step.numbers[1])
        fail("the screen has " + std::to_string(display.width()) + "x" + std::to_string(display.height()) +
             " pixels");
    const host::TextConsole& console = machine_->firmware().text_console();
    if (console.modes_set() == 0) fail("the mode of the firmware's console was not set again");
    if (!console.text().empty()) fail("the firmware's console shows:\n" + console.text());
}

void Player::check_image() {
    const auto content = [](const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    };
    if (content(image_file(test_, scratch_)) != content(image_.path)) fail("the image file has changed");
}

void Player::check_file(const Step& step) {
    std::ifstream stream(on_volume(step.name), std::ios::binary);
    if (!stream) fail("there is no file " + step.name);
    const std::string content(std::istreambuf_iterator<char>(stream), {});
    if (content != step.content)
        fail("the file " + step.name + " holds:\n" + escape(content) + "\nexpected:\n" +
             escape(step.content));
}

// Folders may stay open: the volume's root and the current directory.
void Player::check_end() {
    host::Firmware& firmware = machine_->firmware();
    const std::vector<std::string> complaints = firmware.complaints();
    if (!complaints.empty()) fail("misuse of the firmware: " + complaints.front());
    if (!is_waiting()) return;
    std::uint64_t files = 0;
    std::uint64_t folders = 0;
    for (const auto& volume : firmware.volumes())
        for (const host::OpenFile* file : volume->open_files())
            ++(file->directory ? folders : files);
    if (files != files_left_open_) fail(std::to_string(files) + " files are left open");
    if (folders > 2) fail(std::to_string(folders) + " folders are left open");
    // The explorer keeps the memory map that it has read first.
    const bool kept_map = firmware.faults().uses(host::Service::GetMemoryMap) != map_reads_at_start_;
    const std::uint64_t buffers = firmware.pool().buffers();
    const std::uint64_t pages = firmware.memory().allocated_pages();
    // The memory for machine code is taken when the first of it is made, and kept.
    constexpr std::uint64_t pages_for_code = 256;
    const bool kept_code = pages == pages_at_start_ + pages_for_code;
    if (pages > pages_at_start_ && !kept_code && mode_changes() == mode_changes_at_start_)
        fail(std::to_string(pages - pages_at_start_) + " pages are left allocated");
    if (buffers > buffers_at_start_ + (kept_map ? 1 : 0))
        fail(std::to_string(buffers - buffers_at_start_) + " pool buffers are left allocated");
}

void Player::show(const Step& step, const ScreenText& screen) {
    if (!options_.show) return;
    std::string& text = shown_;
    text += test_.file.string() + ":" + std::to_string(step.line) + ": " + step.source + "\n";
    for (std::size_t row = 0; row < screen.used_rows(); ++row)
        text += "    " + std::to_string(row + 1) + "| " + screen.rows[row] + "\n";
    if (screen.cursor)
        text += "    cursor at row " + std::to_string(screen.cursor->row + 1) + ", column " +
                std::to_string(screen.cursor->column + 1) + "\n";
}

void Player::fail(const std::string& what) {
    report_ = test_.file.string() + ":" + std::to_string(line_) + ": " + what;
    if (report_.back() != '\n') report_ += '\n';
    throw Failure{};
}

std::filesystem::path Player::on_volume(const std::string& name) const {
    return volume_folder(scratch_, 0) / name;
}

}  // namespace korvane::transcript
