#include "values/data_items.h"

#include <string_view>

#include "platform/characters.h"
#include "platform/memory.h"
#include "program/execution.h"
#include "program/program_store.h"
#include "program/word_scan.h"

namespace korvane {

DataPosition data_position;

namespace {

// Where the first DATA from the start of a line on stands.
struct DataPlace {
    std::uint32_t behind_line;  // one more than the index of its line, or than that of the last line when
                                // there is none; 0 when that is not known
    std::uint32_t offset;       // of what follows the word
};

// The way to the next DATA is gone only once for each line: programs go it again with every RESTORE.
struct DataLines {
    std::uint32_t changes;              // when the program had been changed so often
    DataPlace next[max_program_lines];  // as seen from each line
};
DataLines data_lines;

void begin_data(std::uint32_t offset) {
    data_position.offset = offset;
    data_position.in_statement = true;
    data_position.end = 0;
}

// Moves behind the next DATA of the position's line, if there is one.
bool find_data_in_line() {
    WordScan scan(line_text(data_position.line), data_position.offset);
    while (scan.next_word()) {
        if (!scan.word_is("DATA")) continue;
        begin_data(scan.position());
        return true;
    }
    return false;
}

void forget_lines_of_changed_program() {
    if (data_lines.changes == program.changes) return;
    fill_bytes(data_lines.next, 0, program.count * sizeof data_lines.next[0]);
    data_lines.changes = program.changes;
}

// Moves behind the first DATA from the start of the position's line on; false when there is none.
bool find_line_with_data() {
    forget_lines_of_changed_program();
    const std::uint32_t first = data_position.line;
    std::uint32_t& line = data_position.line;
    bool found = false;
    while (!found && line < program.count) {
        if (const DataPlace place = data_lines.next[line]; place.behind_line != 0) {
            line = place.behind_line - 1;
            if (line == program.count) break;
            begin_data(place.offset);
            found = true;
        } else {
            found = find_data_in_line();
            if (!found) ++line;
        }
    }
    const std::uint32_t end = found ? line + 1 : program.count;
    for (std::uint32_t passed = first; passed < end && data_lines.next[passed].behind_line == 0; ++passed)
        data_lines.next[passed] = {line + 1, data_position.offset};
    return found;
}

// Moves to the text of the next DATA statement; false when the program has none left.
bool find_next_data() {
    if (data_position.line == direct_line) move_data_position(0);
    if (data_position.offset != 0 && data_position.line < program.count) {
        if (find_data_in_line()) return true;
        ++data_position.line;
        data_position.offset = 0;
    }
    return find_line_with_data();
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
    for (; quote < text.size() && (quoted || text[quote] != ':'); ++quote)
        if (text[quote] == '"') quoted = !quoted;
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
    if (end < text.size() && text[end] != ',' && (text[end] == '"' || data_position.end != 0))
        end = end_of_quoting_item(text, end);
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
                if (data_position.offset < text.size() && text[data_position.offset] == ',')
                    ++data_position.offset;
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
