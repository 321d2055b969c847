#include "statements/text/input_statement.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "program/errors.h"
#include "program/parse.h"
#include "screen/console.h"
#include "screen/read_line.h"
#include "statements/files/sequential_input.h"
#include "statements/text/input_fields.h"
#include "values/variables.h"

namespace korvane {

namespace {

constexpr std::size_t max_input_variables = 16;
constexpr std::size_t max_prompt = 127;
constexpr std::size_t reply_capacity = 256;

using ReplyBuffer = std::array<std::uint8_t, reply_capacity>;

struct InputRequest {
    std::string_view prompt;
    bool asks;  // "? " follows the prompt
    std::array<Reference, max_input_variables> places;
    std::size_t count;
};

std::string_view take_prompt(Cursor& cursor) {
    const auto* bytes = reinterpret_cast<const char*>(cursor->string.bytes);
    const std::string_view prompt(bytes, std::min<std::size_t>(cursor->string.length, max_prompt));
    ++cursor;
    return prompt;
}

// Raises on a fault.
void read_prompt(Cursor& cursor, InputRequest& request) {
    request.asks = true;
    if (cursor->kind != STRING_LITERAL) return;
    request.prompt = take_prompt(cursor);
    if (accept(cursor, ';')) return;
    request.asks = false;
    expect(cursor, ',', message::syntax_error);
}

// Raises on a fault.
void read_variables(Cursor& cursor, InputRequest& request) {
    do {
        if (request.count == max_input_variables) {
            raise(message::syntax_error);
            return;
        }
        request.places[request.count++] = resolve_reference(cursor);
        if (error_pending()) return;
    } while (accept(cursor, ','));
}

// The user's line; nothing when Escape was pressed, which asks for a break.
std::optional<std::string_view> ask(std::string_view prompt, bool asks, ReplyBuffer& buffer) {
    con_put_text(prompt);
    if (asks) con_put_string("? ");
    const std::int32_t length = key_read_line(buffer);
    if (length == line_aborted) {
        con_put_char(carriage_return);
        request_break();
        return std::nullopt;
    }
    return std::string_view(reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(length));
}

// Gives each place its field; false when the reply does not fit the places. An error that a new reply would
// not cure (no string space) is left pending.
bool assign_fields(ReplyFields& fields, std::span<const Reference> places) {
    for (const Reference& place : places) {
        const auto field = fields.next();
        if (!field) return false;
        if (place.type == Type::STRING) {
            store(place, Value::of_string(*field));
        } else {
            const auto number = number_in_field(*field, place.type);
            if (!number) return false;
            store(place, *number);
        }
        if (error_pending()) break;
    }
    return true;
}

void ask_until_taken(const InputRequest& request) {
    ReplyBuffer buffer;
    for (;;) {
        const auto reply = ask(request.prompt, request.asks, buffer);
        if (!reply) return;
        ReplyFields fields(*reply);
        if (!assign_fields(fields, std::span(request.places).first(request.count))) {
            con_put_message("?Redo from start\r");
            forget_error();
            continue;
        }
        if (!error_pending() && fields.has_more()) con_put_message("Extra ignored\r");
        return;
    }
}

}  // namespace

void do_input(Cursor& cursor) {
    if (cursor[1].kind == '#') {
        do_input_file(cursor);
        return;
    }
    ++cursor;
    InputRequest request{};
    read_prompt(cursor, request);
    if (error_pending()) return;
    read_variables(cursor, request);
    if (error_pending()) return;
    ask_until_taken(request);
}

void do_line_input(Cursor& cursor) {
    if (cursor[2].kind == '#') {
        do_line_input_file(cursor);
        return;
    }
    cursor += 2;
    std::string_view prompt;
    if (cursor->kind == STRING_LITERAL) {
        prompt = take_prompt(cursor);
        accept(cursor, ';');
    }
    const Reference place = resolve_reference(cursor);
    if (error_pending()) return;
    if (place.type != Type::STRING) {
        raise(message::type_mismatch);
        return;
    }
    ReplyBuffer buffer;
    const auto reply = ask(prompt, false, buffer);
    if (reply) store(place, Value::of_string(*reply));
}

}  // namespace korvane
