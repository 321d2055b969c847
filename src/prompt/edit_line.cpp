#include "prompt/edit_line.h"

#include <optional>
#include <string_view>

#include "numbers/format.h"
#include "program/line_range.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "prompt/command_loop.h"
#include "screen/console.h"

namespace korvane {

namespace {

// Prints a text and keeps track of the screen row on which it began,
// which moves up when the text area scrolls.
class TrackedPrinter {
  public:
    TrackedPrinter() : area_(con_text_area()) {
        con_clamp_cursor(area_);
        first_row_ = console.cursor_row;
    }

    void print(std::string_view text) {
        for (const char character : text)
            print(character);
    }

    // Puts the cursor back to the left edge of the row on which the text began.
    void return_to_start() const {
        console.cursor_row = first_row_;
        console.cursor_column = area_.left;
    }

  private:
    void print(char character) {
        const std::uint32_t row = console.cursor_row;
        const bool leaves_row = character == '\r' || console.cursor_column == area_.right;
        con_put_char(static_cast<std::uint8_t>(character));
        const bool scrolled = leaves_row && console.cursor_row == row;
        if (scrolled && first_row_ > area_.top) --first_row_;
    }

    CellRectangle area_;
    std::uint32_t first_row_;  // grid row of the text's first character
};

// Shows a line for editing in place; for a line that does not exist only its number, to be typed after.
void present_line(std::uint32_t number, std::string_view text, bool exists) {
    TrackedPrinter printer;
    printer.print(format_unsigned(number).view());
    printer.print(" ");
    printer.print(text);
    if (exists) printer.return_to_start();
    command_loop.skip_prompt = true;
}

}  // namespace

void do_edit(Cursor& cursor) {
    ++cursor;
    if (execution.program_running) {
        raise(message::illegal_direct);
        return;
    }
    const bool last_error = accept_word(cursor, "ERL");
    if (last_error && errors.line == 0) {
        raise(message::no_error_line);
        return;
    }
    std::optional<std::uint32_t> number = errors.line;
    if (!last_error)
        number = read_line_number(cursor, message::syntax_error_lower, message::line_number_too_large);
    if (!number) return;
    if (!at_statement_end(cursor)) {
        raise(message::syntax_error_lower);
        return;
    }
    const std::uint32_t index = find_line(*number);
    if (index != direct_line)
        present_line(*number, line_text(index), true);
    else if (last_error)
        raise(message::undefined_line_number);
    else
        present_line(*number, {}, false);
}

}  // namespace korvane
