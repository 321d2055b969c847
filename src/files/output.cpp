#include "files/output.h"

#include <algorithm>

#include "numbers/format.h"
#include "program/errors.h"

namespace korvane {

Output output;

namespace {

constexpr std::uint32_t file_width = 255;

}  // namespace

void out_put_char(std::uint8_t code) {
    if (output.file != nullptr)
        if (code == carriage_return)
            file_end_line(*output.file);
        else
            file_put_byte(*output.file, code);
    else if (output.window != nullptr)
        win_put_char(*output.window, code);
    else
        con_put_char(code);
}

void out_put_text(std::string_view text) {
    for (const char character : text) {
        out_put_char(static_cast<std::uint8_t>(character));
        if (error_pending()) return;
    }
}

void out_put_blanks(std::int64_t count) {
    for (; count > 0 && !error_pending(); --count)
        out_put_char(' ');
}

void print_value(const Value& value) {
    if (value.type == Type::STRING)
        out_put_text(value.text());
    else
        out_put_text(format_number(value).view());
}

std::uint32_t out_column() {
    if (output.file != nullptr) return output.file->column;
    if (output.window != nullptr) return output.window->cursor_column - output.window->left;
    if (!console.text_window_active) return console.cursor_column;
    // A cursor left of the window is brought into it by the next character.
    return std::max(console.cursor_column, console.text_window.left) - console.text_window.left;
}

std::uint32_t out_width() {
    if (output.file != nullptr) return file_width;
    if (output.window != nullptr) return output.window->right - output.window->left + 1;
    if (!console.text_window_active) return std::max(text_columns(), 1u);
    return console.text_window.right - console.text_window.left + 1;
}

void print_newline_if_needed() {
    if (out_column() != 0) out_put_char(carriage_return);
}

}  // namespace korvane
