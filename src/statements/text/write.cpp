#include "statements/text/write.h"

#include <string_view>

#include "files/output.h"
#include "numbers/format.h"
#include "program/parse.h"
#include "statements/files/file_number.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

// A string between quotes, quotes inside it as they are; a number in its free form without the blanks.
void write_value(const Value& value) {
    if (value.type == Type::STRING) {
        out_put_char('"');
        if (!error_pending()) print_value(value);
        if (!error_pending()) out_put_char('"');
        return;
    }
    const NumberText text = format_number(value);
    std::string_view digits = text.view();
    digits.remove_suffix(1);
    if (digits.front() == ' ') digits.remove_prefix(1);
    out_put_text(digits);
}

}  // namespace

void do_write(Cursor& cursor) {
    ++cursor;
    const OutputRouting routing;
    if (cursor->kind == '#') {
        output.file = parse_output_file(cursor);
        if (error_pending()) return;
    }
    bool is_first = true;
    while (!at_statement_end(cursor)) {
        if (accept(cursor, ',') || accept(cursor, ';')) continue;
        const Value value = evaluate(cursor);
        if (error_pending()) return;
        if (!is_first) out_put_char(',');
        is_first = false;
        if (!error_pending()) write_value(value);
        if (error_pending()) return;
    }
    out_put_char(carriage_return);
}

}  // namespace korvane
