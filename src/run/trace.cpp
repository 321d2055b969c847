#include "run/trace.h"

#include <algorithm>

#include "files/output.h"
#include "numbers/format.h"
#include "platform/memory.h"
#include "program/line_range.h"
#include "program/line_starts.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "screen/console.h"
#include "values/variables.h"

namespace korvane {

Trace trace;

namespace {

constexpr std::uint32_t every_line = 0xFFFFFFFF;

void print_watch(const char* name) {
    con_put_string(name);
    con_put_char('=');
    VariableEntry* entry = find_variable(name, false);
    if (entry == nullptr)
        con_put_string("<undefined>");
    else
        print_value(load({entry->storage, entry->type}));
}

void list_watches() {
    con_put_string("TRACE ");
    for (std::uint32_t i = 0; i < trace.watch_count; ++i) {
        if (i != 0) con_put_char(',');
        con_put_string(trace.watches[i]);
    }
    if (trace.watch_count == 0) con_put_string("OFF");
    con_put_char(carriage_return);
}

// One name of the list. Raises and gives false on a fault.
bool add_watch(Cursor& cursor) {
    if (cursor->kind != IDENTIFIER) {
        raise(message::expected_variable);
        return false;
    }
    if (cursor[1].kind == '(') {
        raise(message::trace_supports_scalar_variables);
        return false;
    }
    if (trace.watch_count == max_watches) {
        raise(message::too_many_variables);
        return false;
    }
    copy_bytes(trace.watches[trace.watch_count++], cursor->name, name_capacity);
    ++cursor;
    return true;
}

bool in_traced_range(std::uint32_t line_number) {
    return trace.lines_on && line_number >= trace.first_line && line_number <= trace.last_line;
}

void note_change() {
    line_starts.is_traced = trace_active() ? is_traced : nullptr;
    mark_line_starts();
}

}  // namespace

void clear_trace() {
    trace.lines_on = false;
    trace.watch_count = 0;
    note_change();
}

bool is_traced(std::uint32_t line_number) {
    return trace.watch_count != 0 || in_traced_range(line_number);
}

void print_trace(std::uint32_t line_number) {
    if (in_traced_range(line_number)) {
        con_put_char('[');
        con_put_text(format_unsigned(line_number).view());
        con_put_char(']');
    }
    if (trace.watch_count == 0) return;
    con_put_string(" {");
    for (std::uint32_t i = 0; i < trace.watch_count; ++i) {
        if (i != 0) con_put_char(' ');
        print_watch(trace.watches[i]);
    }
    con_put_char('}');
}

void do_tron(Cursor& cursor) {
    ++cursor;
    LineRange range{0, every_line};
    if (!at_statement_end(cursor)) {
        const auto first = read_line_number(cursor, message::syntax_error, message::illegal_function_call);
        if (!first) return;
        range = {*first, *first};
        if (accept(cursor, '-')) {
            const auto last = read_line_number(cursor, message::syntax_error, message::illegal_function_call);
            if (!last) return;
            range.last = *last;
        }
        if (!check_line_range(range)) return;
    }
    trace.lines_on = true;
    trace.first_line = range.first;
    trace.last_line = range.last;
    note_change();
}

void troff() {
    if (!trace.lines_on) return;
    trace.lines_on = false;
    note_change();
}

void do_troff(Cursor& cursor) {
    ++cursor;
    troff();
}

void do_trace(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) {
        list_watches();
        return;
    }
    trace.watch_count = 0;
    if (!accept_word(cursor, "OFF")) {
        while (add_watch(cursor) && accept(cursor, ',')) {
        }
    }
    note_change();
}

}  // namespace korvane
