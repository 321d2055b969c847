#include "statements/data/variable_listing.h"

#include "files/output.h"
#include "numbers/format.h"
#include "platform/characters.h"
#include "program/parse.h"
#include "screen/console.h"
#include "screen/pager.h"
#include "values/convert.h"
#include "values/evaluator.h"
#include "values/variables.h"

namespace korvane {

namespace {

enum class Detail { simple, full };

// Pauses a listing each time a page is full.
class LineCounter {
  public:
    void line_ended() {
        const CellRectangle area = con_text_area();
        const std::uint32_t rows = area.bottom < area.top ? 0 : area.bottom - area.top + 1;
        ++lines_;
        if (rows < 4 || lines_ < rows - 2) return;
        pause_listing();
        lines_ = 0;
    }

  private:
    std::uint32_t lines_ = 0;  // since the last pause
};

// Raises and gives SIMPLE on a fault.
Detail read_detail(Cursor& cursor) {
    if (at_statement_end(cursor)) return Detail::simple;
    if (cursor->kind == IDENTIFIER) {
        // COMPLEX is an accepted synonym, deliberately left out of the help text.
        if (accept_word(cursor, "FULL") || accept_word(cursor, "COMPLEX")) return Detail::full;
        if (!accept_word(cursor, "SIMPLE")) raise(message::expected_simple_or_full);
        return Detail::simple;
    }
    const std::int64_t mode = evaluate_integer(cursor);
    if (error_pending()) return Detail::simple;
    if (mode != 0 && mode != 1) raise(message::illegal_function_call);
    return mode == 1 ? Detail::full : Detail::simple;
}

void print_count(const char* label, std::uint64_t count) {
    con_put_string(label);
    con_put_text(format_unsigned(count).view());
}

void print_address(const std::uint8_t* place) {
    const auto address = reinterpret_cast<std::uint64_t>(place);
    con_put_string("  @0x");
    for (int shift = 60; shift >= 0; shift -= 4)
        con_put_char(hex_digit(address >> shift));
}

void print_type(Type type) {
    con_put_string("  ");
    con_put_string(type_name(type));
}

void print_scalar(VariableEntry& entry, Detail detail) {
    con_put_string(entry.name);
    if (detail == Detail::full) {
        print_type(entry.type);
        con_put_string("  = ");
        print_value(load({entry.storage, entry.type}));
        print_address(entry.storage);
    }
    con_put_char(carriage_return);
}

std::uint64_t sum_of_lengths(const StringDescriptor* descriptors, std::uint64_t count) {
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < count; ++i)
        sum += descriptors[i].length;
    return sum;
}

void print_sizes(VariableEntry& entry) {
    const std::uint64_t count = element_count(entry);
    const std::uint64_t bytes = count * storage_size(entry.type);
    print_count("  elements=", count);
    if (entry.type != Type::STRING) {
        print_count("  bytes=", bytes);
        return;
    }
    const auto* descriptors = reinterpret_cast<const StringDescriptor*>(entry.array->elements());
    const std::uint64_t data = sum_of_lengths(descriptors, count);
    print_count("  bytes=", bytes + data);
    print_count("  desc=", bytes);
    print_count("  data=", data);
}

void print_array(VariableEntry& entry, Detail detail) {
    con_put_string(entry.name);
    for (std::uint64_t i = 0; i < entry.array->dimensions; ++i) {
        print_count(i == 0 ? "(" : ",", static_cast<std::uint64_t>(variables.array_base));
        print_count(" TO ", static_cast<std::uint64_t>(entry.array->bounds[i]));
    }
    con_put_char(')');
    if (detail == Detail::full) {
        print_type(entry.type);
        print_sizes(entry);
        print_address(entry.array->elements());
    }
    con_put_char(carriage_return);
}

void list_entries(Cursor& cursor, bool arrays, const char* none,
                  void (*print_entry)(VariableEntry& entry, Detail detail)) {
    ++cursor;
    const Detail detail = read_detail(cursor);
    if (error_pending()) return;
    LineCounter counter;
    bool any = false;
    for (std::uint32_t i = 0; i < variables.count; ++i) {
        VariableEntry& entry = variables.table[i];
        if (entry.is_array() != arrays) continue;
        any = true;
        print_entry(entry, detail);
        counter.line_ended();
    }
    if (!any) con_put_string(none);
}

}  // namespace

void do_varinfo(Cursor& cursor) {
    list_entries(cursor, false, "(no scalar variables)\r", print_scalar);
}

void do_arrayinfo(Cursor& cursor) {
    list_entries(cursor, true, "(no arrays)\r", print_array);
}

}  // namespace korvane
