#include "statements/text/print.h"

#include <string_view>

#include "files/output.h"
#include "program/parse.h"
#include "statements/files/file_number.h"
#include "statements/text/print_formatted.h"
#include "statements/text/print_paragraph.h"
#include "statements/text/window_argument.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

// The destination in front of the list: #n, or @n[,].
void parse_destination(Cursor& cursor) {
    if (cursor->kind == '#') {
        output.file = parse_output_file(cursor);
    } else if (cursor->kind == '@') {
        output.window = parse_window(cursor);
        if (!error_pending()) accept(cursor, ',');
    }
}

// A comma moves by at least one column to the next print zone;
// the right edge begins a new line and so a zone.
void move_to_next_zone() {
    do {
        out_put_char(' ');
    } while (out_column() % print_zone_width != 0 && !error_pending());
}

void print_list(Cursor& cursor) {
    bool ends_line = true;
    while (!at_statement_end(cursor)) {
        if (accept(cursor, ';')) {
            ends_line = false;
        } else if (accept(cursor, ',')) {
            move_to_next_zone();
            ends_line = false;
        } else {
            const Value value = evaluate(cursor);
            if (error_pending()) return;
            print_value(value);
            ends_line = true;
        }
        if (error_pending()) return;
    }
    if (ends_line) out_put_char(carriage_return);
}

}  // namespace

void print_tab(std::int64_t column) {
    if (column < 0) {
        raise(message::illegal_function_call);
        return;
    }
    // TAB(0) means the first column, like TAB(1).
    const std::int64_t target = column == 0 ? 0 : (column - 1) % out_width();
    if (out_column() > target) out_put_char(carriage_return);
    if (!error_pending()) out_put_blanks(target - out_column());
}

void print_spaces(std::int64_t count) {
    if (count < 0) {
        raise(message::illegal_function_call);
        return;
    }
    out_put_blanks(count % out_width());
}

void do_print(Cursor& cursor) {
    ++cursor;
    const OutputRouting routing;
    parse_destination(cursor);
    if (error_pending()) return;
    if (cursor->kind == KW_USING)
        print_formatted(cursor);
    else if (is_paragraph(cursor))
        print_paragraph(cursor);
    else
        print_list(cursor);
}

}  // namespace korvane
