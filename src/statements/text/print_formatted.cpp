#include "statements/text/print_formatted.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "files/output.h"
#include "numbers/print_using.h"
#include "platform/memory.h"
#include "program/parse.h"
#include "values/convert.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

bool is_separator(const Token* at) {
    return at->kind == ';' || at->kind == ',';
}

bool accept_separator(Cursor& cursor) {
    if (!is_separator(cursor)) return false;
    ++cursor;
    return true;
}

void put_string_field(const UsingItem& item, const Value& value) {
    std::string_view text = value.text();
    if (item.kind == UsingKind::first_byte) text = text.substr(0, 1);
    if (item.kind == UsingKind::fixed_string) text = text.substr(0, item.width);
    out_put_text(text);
    if (item.kind != UsingKind::fixed_string) return;
    out_put_blanks(std::int64_t{item.width} - static_cast<std::int64_t>(text.size()));
}

// Takes the next expression of the list for a field, and the separator behind it.
void put_field(const UsingItem& item, Cursor& cursor) {
    const Value value = evaluate(cursor);
    if (error_pending()) return;
    const bool wants_string = item.kind != UsingKind::number;
    if (wants_string != (value.type == Type::STRING)) {
        raise(message::type_mismatch);
        return;
    }
    if (wants_string) {
        put_string_field(item, value);
    } else {
        FieldText text;
        format_field(to_double(value), item.field, text);
        out_put_text(text.view());
    }
    if (!error_pending()) accept_separator(cursor);
}

// One pass over the format. True when the list goes on and the format has a field to take more of it.
bool put_pass(std::string_view format, Cursor& cursor) {
    bool used_field = false;
    std::size_t position = 0;
    for (UsingItem item = next_using_item(format, position); item.kind != UsingKind::end;
         item = next_using_item(format, position)) {
        if (!item.is_field()) {
            out_put_char(static_cast<std::uint8_t>(item.character));
        } else {
            if (at_statement_end(cursor)) return false;
            used_field = true;
            put_field(item, cursor);
        }
        if (error_pending()) return false;
    }
    return used_field && !at_statement_end(cursor);
}

}  // namespace

void print_formatted(Cursor& cursor) {
    ++cursor;
    const Value format = evaluate_string(cursor);
    if (error_pending()) return;
    if (!accept_separator(cursor)) {
        raise(message::syntax_error_lower);
        return;
    }
    // A copy: evaluating the list must not be able to change the format it is printed by.
    std::array<char, using_format_limit> copy;
    const std::size_t length = std::min<std::size_t>(format.length, copy.size());
    copy_bytes(copy.data(), format.bytes, length);

    while (put_pass({copy.data(), length}, cursor)) {
    }
    if (error_pending()) return;
    // A separator behind the last value has been skipped with it;
    // at the end of the list it holds the line open.
    const bool line_stays_open =
        accept_separator(cursor) || (is_separator(cursor - 1) && at_statement_end(cursor));
    if (!line_stays_open) out_put_char(carriage_return);
}

}  // namespace korvane
