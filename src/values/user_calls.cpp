// Calls of the functions that DEF FN has defined.
#include <utility>

#include "platform/memory.h"
#include "platform/stack.h"
#include "program/errors.h"
#include "program/execution.h"
#include "program/messages.h"
#include "program/parse.h"
#include "screen/keyboard.h"
#include "values/evaluator.h"
#include "values/functions.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane {

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
        if (parameter.existed)
            copy_bytes(parameter.entry->storage, parameter.storage, sizeof parameter.storage);
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

}  // namespace

[[gnu::cold]] bool escape_between_calls() {
    const std::uint64_t statement = std::exchange(user_functions.called_by, execution.statement_count);
    // The calls that are left of the statement are not to be made either.
    if (statement == execution.statement_count && key_break_check()) return true;
    user_functions.calls = 0;
    return false;
}

Value call_user_function(UserFunction& function, const Value* arguments, std::int32_t count) {
    if (stack_exhausted()) return fail(message::out_of_memory);
    if (!may_call()) {
        user_functions.calls = 0;
        request_break();
        return Value::nothing();
    }
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

}  // namespace korvane
