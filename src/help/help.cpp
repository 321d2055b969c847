#include "help/help.h"

#include <algorithm>
#include <string_view>

#include "core/errors.h"
#include "core/keywords.h"
#include "core/messages.h"
#include "core/parse.h"
#include "help/help_table.h"
#include "screen/console.h"
#include "screen/output.h"

namespace korvane {
namespace {

constexpr std::uint32_t widest_index_line = 79;
constexpr std::uint32_t gap = 2;  // blanks between two names of the index

void end_line() {
    con_put_char(carriage_return);
}

// Ends a line of this many characters. One that fills the text area has wrapped by itself.
void end_names(std::uint32_t column) {
    if (column < out_width()) end_line();
}

// A category's names, on lines of at most `width` characters. Gives the first entry of the next category.
std::size_t print_names(std::size_t first, std::uint32_t width) {
    std::uint32_t column = 0;
    std::size_t i = first;
    const std::string_view category = help_table[first].category;
    for (; i < help_table.size() && help_table[i].category == category; ++i) {
        const std::string_view name = help_table[i].name;
        const auto length = static_cast<std::uint32_t>(name.size());
        if (column > 0 && column + gap + length > width) {
            end_names(column);
            column = 0;
        }
        if (column > 0) {
            con_put_string("  ");
            column += gap;
        }
        con_put_text(name);
        column += length;
    }
    end_names(column);
    return i;
}

void print_index() {
    con_put_string("Korvane BASIC v2.0 help. Type HELP name for details.");
    end_line();
    const std::uint32_t width = std::min(out_width(), widest_index_line);
    for (std::size_t i = 0; i < help_table.size();) {
        end_line();
        con_put_char('[');
        con_put_string(help_table[i].category);
        con_put_char(']');
        end_line();
        i = print_names(i, width);
    }
}

void print_entry(std::string_view name) {
    for (const HelpEntry& entry : help_table) {
        if (entry.name != name) continue;
        con_put_string(entry.text);
        end_line();
        return;
    }
    con_put_string("No help for ");
    con_put_text(name);
    end_line();
}

// The name at the cursor, as a keyword or an identifier spells it; STARTUP.BAS is three tokens.
bool read_name(Cursor& cursor, std::string_view& name) {
    if (is_word(cursor, "STARTUP") && cursor[1].kind == '.' && is_word(cursor + 2, "BAS")) {
        name = "STARTUP.BAS";
        cursor += 3;
        return true;
    }
    name = cursor->kind == IDENTIFIER ? std::string_view(cursor->name) : keyword_name(cursor->kind);
    if (name.empty()) {
        raise(message::syntax_error);
        return false;
    }
    ++cursor;
    return true;
}

}  // namespace

void do_help(Cursor& cursor) {
    ++cursor;
    if (at_statement_end(cursor)) {
        print_index();
        return;
    }
    std::string_view name;
    if (read_name(cursor, name)) print_entry(name);
}

}  // namespace korvane
