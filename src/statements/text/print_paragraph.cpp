#include "statements/text/print_paragraph.h"

#include <algorithm>
#include <string_view>

#include "files/output.h"
#include "platform/characters.h"
#include "program/parse.h"
#include "values/convert.h"
#include "values/evaluator.h"

namespace korvane {

Paragraph paragraph;

namespace {

constexpr std::int64_t max_paragraph_width = 65535;

bool is_word_byte(std::uint8_t byte) {
    return !is_blank(byte) && !is_line_break(byte);
}

void put_bytes(const std::uint8_t* bytes, std::uint32_t length) {
    out_put_text({reinterpret_cast<const char*>(bytes), length});
}

// Sends the pending words and empties the list. Justified, the spare columns go to the gaps, the leftmost
// gaps taking what does not divide evenly.
void put_pending_words(bool justified) {
    const std::uint64_t gaps = paragraph.count - 1;
    const std::uint64_t used = paragraph.total_length + gaps;
    std::uint64_t spare = 0;
    if (justified && gaps > 0 && paragraph.line_width > used) spare = paragraph.line_width - used;
    for (std::uint32_t word = 0; word < paragraph.count && !error_pending(); ++word) {
        put_bytes(paragraph.words[word], paragraph.lengths[word]);
        if (word == gaps) break;
        const std::uint64_t blanks = 1 + spare / gaps + (word < spare % gaps ? 1 : 0);
        out_put_blanks(static_cast<std::int64_t>(blanks));
    }
    paragraph.count = 0;
    paragraph.total_length = 0;
}

// Ends the line being collected; every further one has the later width.
void end_full_line() {
    print_newline_if_needed();
    paragraph.line_width = paragraph.later_width;
}

// A line break in the text: ends the paragraph's line, or makes an empty one.
void end_text_line() {
    if (paragraph.count > 0) {
        put_pending_words(false);
        print_newline_if_needed();
    } else {
        out_put_char(carriage_return);
    }
    paragraph.line_width = paragraph.later_width;
}

void add_word(const std::uint8_t* word, std::uint32_t length) {
    const bool fits = paragraph.total_length + paragraph.count + length <= paragraph.line_width;
    if (paragraph.count > 0 && (!fits || paragraph.count == max_line_words)) {
        put_pending_words(paragraph.justify);
        end_full_line();
    }
    if (paragraph.count == 0) {
        // A word longer than a line is cut into full lines; its rest begins the next one.
        while (length > paragraph.line_width && !error_pending()) {
            const std::uint32_t chunk = paragraph.line_width;
            put_bytes(word, chunk);
            end_full_line();
            word += chunk;
            length -= chunk;
        }
    }
    paragraph.words[paragraph.count] = word;
    paragraph.lengths[paragraph.count] = length;
    ++paragraph.count;
    paragraph.total_length += length;
}

void put_text(const std::uint8_t* text, std::uint32_t length) {
    std::uint32_t at = 0;
    while (at < length && !error_pending()) {
        if (is_word_byte(text[at])) {
            const std::uint32_t start = at;
            while (at < length && is_word_byte(text[at]))
                ++at;
            add_word(text + start, at - start);
            continue;
        }
        if (is_line_break(text[at])) {
            if (text[at] == '\r' && at + 1 < length && text[at + 1] == '\n') ++at;
            end_text_line();
        }
        ++at;
    }
    if (paragraph.count > 0 && !error_pending()) put_pending_words(false);
}

// Reads [width,] text$. Gives the text and the requested width, 0 when none is given.
Value parse_text(Cursor& cursor, std::uint32_t& requested_width) {
    requested_width = 0;
    const Value first = evaluate(cursor);
    if (error_pending() || first.type == Type::STRING) return first;
    const std::int64_t width = to_integer(first);
    if (error_pending()) return Value::nothing();
    if (width < 1 || width > max_paragraph_width) {
        raise(message::illegal_function_call);
        return Value::nothing();
    }
    requested_width = static_cast<std::uint32_t>(width);
    if (!expect_comma(cursor)) return Value::nothing();
    return evaluate_string(cursor);
}

// The widths of the lines: the first one begins where the output stands.
void set_widths(std::uint32_t requested_width) {
    const std::uint32_t available = out_width();
    const std::uint32_t column = out_column();
    const std::uint32_t width = requested_width == 0 ? available : std::min(requested_width, available);
    paragraph.later_width = width;
    paragraph.line_width = std::min(width, available > column ? available - column : 1);
}

}  // namespace

bool is_paragraph(const Token* at) {
    if (!is_word(at, "WRAP") && !is_word(at, "JUSTIFY")) return false;
    const std::uint8_t next = at[1].kind;
    return next == NUMBER || next == STRING_LITERAL || next == IDENTIFIER;
}

void print_paragraph(Cursor& cursor) {
    paragraph.justify = is_word(cursor, "JUSTIFY");
    ++cursor;
    std::uint32_t requested_width = 0;
    const Value text = parse_text(cursor, requested_width);
    if (error_pending()) return;

    set_widths(requested_width);
    paragraph.count = 0;
    paragraph.total_length = 0;
    put_text(text.bytes, text.length);
    if (error_pending()) return;

    if (accept(cursor, ';')) return;
    if (!at_statement_end(cursor)) {
        raise(message::syntax_error);
        return;
    }
    print_newline_if_needed();
}

}  // namespace korvane
