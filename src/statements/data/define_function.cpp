#include "statements/data/define_function.h"

#include "platform/memory.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/functions.h"
#include "values/user_functions.h"

namespace korvane {

namespace {

// The parts of a definition behind its name, where they stand in the line.
struct Definition {
    const Token* parameters;  // names, with a token between two of them
    std::int32_t parameter_count;
    const Token* body;
    std::int32_t body_length;
    std::uint64_t text_bytes;  // of the text literals in the body
};

// The names in parentheses, up to and including ")".
bool read_parameters(Cursor& cursor, Definition& definition) {
    definition.parameters = cursor;
    do {
        if (cursor->kind != IDENTIFIER) {
            raise(message::expected_parameter);
            return false;
        }
        if (definition.parameter_count == max_parameters) {
            raise(message::too_many_params);
            return false;
        }
        ++definition.parameter_count;
        ++cursor;
    } while (accept(cursor, ','));
    return expect(cursor, ')', message::expected_right_parenthesis);
}

bool read_body(Cursor& cursor, Definition& definition) {
    definition.body = cursor;
    for (; !at_statement_end(cursor); ++cursor) {
        if (definition.body_length == max_tokens_per_line) {
            raise(message::def_fn_too_long);
            return false;
        }
        ++definition.body_length;
        if (cursor->kind == STRING_LITERAL) definition.text_bytes += cursor->string.length;
    }
    if (definition.text_bytes <= free_data_bytes()) return true;
    raise(message::out_of_string_space);
    return false;
}

bool read_definition(Cursor& cursor, Definition& definition) {
    if (accept(cursor, '(') && !read_parameters(cursor, definition)) return false;
    return expect(cursor, '=', message::expected_equals) && read_body(cursor, definition);
}

// Text literals move to string space, so that the function outlives the line. Nothing here fails.
void define(UserFunction& function, const Definition& definition) {
    function.parameter_count = definition.parameter_count;
    for (std::int32_t i = 0; i < definition.parameter_count; ++i)
        copy_bytes(function.parameters[i], definition.parameters[2 * i].name, name_capacity);
    function.body_length = definition.body_length;
    const auto length = static_cast<std::size_t>(definition.body_length);
    copy_bytes(function.body, definition.body, length * sizeof(Token));
    function.body[length] = Token{};
    if (definition.text_bytes == 0) return;
    for (std::size_t i = 0; i < length; ++i) {
        Token& token = function.body[i];
        if (token.kind != STRING_LITERAL) continue;
        token.string.bytes = new_string_of(token.string.bytes, token.string.length).bytes;
    }
}

}  // namespace

// Runs once per function: its size matters, not its speed.
[[gnu::cold]] void do_def(Cursor& cursor) {
    ++cursor;
    if (cursor->kind != IDENTIFIER || !is_user_function_name(cursor->name)) {
        raise(message::expected_fn_name);
        return;
    }
    UserFunction* function = find_user_function(cursor->name);
    if (function == nullptr && user_functions.count == max_user_functions) {
        raise(message::too_many_def_fn);
        return;
    }
    const char* name = (cursor++)->name;
    // Nothing is changed before the whole definition has been found to be good.
    Definition definition{};
    if (!read_definition(cursor, definition)) return;
    if (function == nullptr) {
        user_functions.names.add(name, static_cast<std::uint16_t>(user_functions.count));
        function = &user_functions.functions[user_functions.count++];
        fill_bytes(function, 0, sizeof *function);
        copy_bytes(function->name, name, name_capacity);
    }
    // What was learned about calls of the old definition is no longer true.
    ++arenas.generation;
    define(*function, definition);
}

}  // namespace korvane
