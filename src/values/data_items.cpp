#include "values/data_items.h"

#include <string_view>

#include "platform/characters.h"
#include "program/execution.h"
#include "program/program_store.h"
#include "program/word_scan.h"

namespace korvane {

DataPosition data_position;

namespace {

// Moves to the text of the next DATA statement; false when the program has none left.
bool find_next_data() {
    const bool from_start = data_position.line == direct_line;
    // DATA often stands at the end of a program, and RESTORE in a loop: the way there is gone only once.
    if (from_start)
        move_data_position(data_position.changes == program.changes ? data_position.first_line : 0);
    bool found = false;
    for (; data_position.line < program.count; ++data_position.line, data_position.offset = 0) {
        WordScan scan(line_text(data_position.line), data_position.offset);
        while (!found && scan.next_word())
            found = scan.word_is("DATA");
        if (!found) continue;
        data_position.offset = scan.position();
        data_position.in_statement = true;
        data_position.end = 0;
        break;
    }
    if (from_start) {
        data_position.first_line = data_position.line;
        data_position.changes = program.changes;
    }
    return found;
}

void skip_blanks(std::string_view text) {
    while (data_position.offset < text.size() && is_blank(text[data_position.offset]))
        ++data_position.offset;
}

// The line's text up to the end of the DATA text, as far as that is known.
std::string_view data_text() {
    const std::string_view text = line_text(data_position.line);
    return data_position.end == 0 ? text : text.substr(0, data_position.end);
}

bool at_data_end(std::string_view text) {
    if (data_position.offset >= text.size()) return true;
    return data_position.end == 0 && text[data_position.offset] == ':';
}

// The end of the DATA text, looked for from a quotation mark on: at the first ":" between no two marks.
std::uint32_t end_behind_quote(std::string_view text, std::uint32_t quote) {
    bool quoted = false;
    for (; quote < text.size() && (quoted || text[quote] != ':'); ++quote) {
        if (text[quote] == '"') quoted = !quoted;
    }
    return quote;
}

// From behind the opening quote to the closing one, or to the end of the text when it is missing.
std::string_view take_quoted(std::string_view text) {
    const std::uint32_t start = data_position.offset + 1;
    std::uint32_t end = start;
    while (end < text.size() && text[end] != '"')
        ++end;
    data_position.offset = end < text.size() ? end + 1 : end;
    skip_blanks(text);
    return text.substr(start, end - start);
}

// A comma, a ":" or a quotation mark.
constexpr bool may_end_item(char character) {
    constexpr std::uint64_t marks =
        std::uint64_t{1} << ',' | std::uint64_t{1} << ':' | std::uint64_t{1} << '"';
    const auto code = static_cast<std::uint8_t>(character);
    return code < 64 && (marks >> code & 1) != 0;
}

// The end of an item that goes on behind a quotation mark, or behind a ":" that one protects.
[[gnu::noinline, gnu::cold]] std::uint32_t end_of_quoting_item(std::string_view text, std::uint32_t mark) {
    if (data_position.end == 0) data_position.end = end_behind_quote(text, mark);
    const std::size_t comma = text.substr(0, data_position.end).find(',', mark);
    return comma == std::string_view::npos ? data_position.end : static_cast<std::uint32_t>(comma);
}

std::string_view take_unquoted(std::string_view text) {
    const std::uint32_t start = data_position.offset;
    std::uint32_t end = start;
    while (end < text.size() && !may_end_item(text[end]))
        ++end;
    if (end < text.size() && text[end] != ',' && (text[end] == '"' || data_position.end != 0)) {
        end = end_of_quoting_item(text, end);
    }
    data_position.offset = end;
    while (end != start && is_blank(text[end - 1]))
        --end;
    return text.substr(start, end - start);
}

}  // namespace

bool next_data_item(std::string_view& item) {
    for (;;) {
        if (data_position.line < program.count && data_position.in_statement) {
            const std::string_view text = data_text();
            skip_blanks(text);
            if (!at_data_end(text)) {
                item = text[data_position.offset] == '"' ? take_quoted(text) : take_unquoted(text);
                if (data_position.offset < text.size() && text[data_position.offset] == ',') {
                    ++data_position.offset;
                }
                return true;
            }
            data_position.in_statement = false;
        }
        if (!find_next_data()) return false;
    }
}

void move_data_position(std::uint32_t index) {
    data_position.line = index;
    data_position.offset = 0;
    data_position.in_statement = false;
    data_position.end = 0;
}

void reset_data_position() {
    move_data_position(direct_line);
}

}  // namespace korvane
