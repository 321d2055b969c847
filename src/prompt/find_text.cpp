#include "prompt/find_text.h"

#include <string_view>

#include "platform/characters.h"
#include "program/line_range.h"
#include "program/parse.h"
#include "program/program_store.h"
#include "prompt/list.h"
#include "screen/console.h"
#include "values/evaluator.h"

namespace korvane {

namespace {

constexpr LineRangeMessages find_range_messages{message::line_number_too_large, message::expected_line_number,
                                                message::expected_line_range};

bool begins_with(std::string_view text, std::string_view pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (fold_to_upper(text[i]) != fold_to_upper(pattern[i])) return false;
    return true;
}

bool contains(std::string_view text, std::string_view pattern) {
    for (std::size_t start = 0; start + pattern.size() <= text.size(); ++start)
        if (begins_with(text.substr(start), pattern)) return true;
    return false;
}

}  // namespace

void do_find(Cursor& cursor) {
    ++cursor;
    const Value value = evaluate_string(cursor);
    if (error_pending()) return;
    LineRange range;
    if (accept(cursor, ',') && !read_line_range(cursor, find_range_messages, range)) return;
    if (!at_statement_end(cursor)) {
        raise(message::syntax_error);
        return;
    }
    if (!check_line_range(range)) return;

    const std::string_view pattern = value.text();
    const std::uint32_t end = first_line_from(std::uint64_t{range.last} + 1);
    bool found = false;
    for (std::uint32_t index = first_line_from(range.first); index < end; ++index) {
        if (!contains(line_text(index), pattern)) continue;
        print_program_line(index);
        found = true;
    }
    if (!found) con_put_string("(not found)\r");
}

}  // namespace korvane
