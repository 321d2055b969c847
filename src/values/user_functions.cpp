#include "values/user_functions.h"

#include "platform/memory.h"
#include "platform/stack.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/evaluator.h"
#include "values/functions.h"
#include "values/variables.h"

namespace korvane {

UserFunctions user_functions;

namespace {

// A parameter variable's own value while a call uses it. The raw storage is kept, so that putting a string
// back takes no string space.
struct SavedParameter {
    VariableEntry* entry;
    bool existed;
    std::uint8_t storage[sizeof(VariableEntry::storage)];
};

// Saves or creates the parameter's variable and stores the argument in it.
bool bind_parameter(const char* name, const Value& argument, SavedParameter& saved) {
    saved.entry = find_variable(name, false);
    saved.existed = saved.entry != nullptr;
    // A parameter that the call creates stays as a variable afterwards (deliberate).
    if (!saved.existed) saved.entry = create_variable(name, false);
    if (saved.entry == nullptr) return false;
    copy_bytes(saved.storage, saved.entry->storage, sizeof saved.storage);
    store({saved.entry->storage, saved.entry->type}, argument);
    return !error_pending();
}

// In reverse, so that of two parameters with one name the older value comes back.
void restore_parameters(const SavedParameter* saved, std::int32_t count) {
    while (count-- > 0) {
        const SavedParameter& parameter = saved[count];
        if (parameter.existed) {
            copy_bytes(parameter.entry->storage, parameter.storage, sizeof parameter.storage);
        }
    }
}

// The arguments in parentheses; -1 after an error.
std::int32_t read_call_arguments(Cursor& cursor, Value* arguments) {
    std::int32_t count = 0;
    ++cursor;
    do {
        if (count == max_parameters) {
            raise(message::too_many_args);
            return -1;
        }
        arguments[count++] = evaluate(cursor);
        if (error_pending()) return -1;
    } while (accept(cursor, ','));
    return expect(cursor, ')', message::expected_right_parenthesis) ? count : -1;
}

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

void forget_user_functions() {
    user_functions.count = 0;
    user_functions.names.clear();
}

UserFunction* find_user_function(const char* name) {
    if (!is_user_function_name(name)) return nullptr;
    const auto& names = user_functions.names;
    for (std::uint16_t i = names.first(name); i != names.none; i = names.next(i)) {
        UserFunction& function = user_functions.functions[i];
        if (same_name(function.name, name)) return &function;
    }
    return nullptr;
}

Value call_user_function(UserFunction& function, const Value* arguments, std::int32_t count) {
    if (stack_exhausted()) return fail(message::out_of_memory);
    SavedParameter saved[max_parameters];
    // A store that fails leaves its variable as it was, so only the parameters bound before it are put back.
    std::int32_t bound = 0;
    while (bound < count && bind_parameter(function.parameters[bound], arguments[bound], saved[bound]))
        ++bound;
    Value result = Value::nothing();
    if (bound == count) {
        Cursor body = function.body;
        result = evaluate(body);
    }
    restore_parameters(saved, bound);
    return result;
}

Value evaluate_user_function(const Token& name, Cursor& cursor) {
    UserFunction* function = find_user_function(name.name);
    if (function == nullptr) return fail(message::undefined_user_function);
    Value arguments[max_parameters];
    const std::int32_t count = read_call_arguments(cursor, arguments);
    if (count < 0) return Value::nothing();
    if (count != function->parameter_count) return fail(message::wrong_number_of_args);
    return call_user_function(*function, arguments, count);
}

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
