#include "help/help.h"

#include <algorithm>
#include <string_view>

#include "files/output.h"
#include "help/help_table.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "screen/console.h"

namespace korvane {
namespace {

constexpr std::uint32_t widest_index_line = 79;
constexpr std::uint32_t gap = 2;  // blanks between two names of the index

void end_line() {
    con_put_char(carriage_return);
}

// The names of the category at which the walk stands, on lines of at most `width` characters; what fills the
// text area has ended its line by itself. False when the category was the last one; else the walk is left at
// the first entry of the next.
bool print_names(HelpWalk& walk, std::uint32_t width) {
    std::uint32_t column = 0;
    bool more = true;
    const char* category = walk.entry().category.data();
    for (; more && walk.entry().category.data() == category; more = walk.next()) {
        const std::string_view name = walk.entry().name;
        const auto length = static_cast<std::uint32_t>(name.size());
        if (column > 0 && column + gap + length > width) {
            print_newline_if_needed();
            column = 0;
        }
        if (column > 0) {
            con_put_string("  ");
            column += gap;
        }
        con_put_text(name);
        column += length;
    }
    print_newline_if_needed();
    return more;
}

void print_index() {
    con_put_string("Korvane BASIC v2.0 help. Type HELP name for details.");
    end_line();
    const std::uint32_t width = std::min(out_width(), widest_index_line);
    HelpWalk walk;
    walk.next();
    do {
        end_line();
        con_put_char('[');
        con_put_text(walk.entry().category);
        con_put_char(']');
        end_line();
    } while (print_names(walk, width));
}

void print_entry(std::string_view name) {
    for (HelpWalk walk; walk.next();) {
        if (walk.entry().name != name) continue;
        con_put_text(walk.entry().text);
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
