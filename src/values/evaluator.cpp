#include "values/evaluator.h"

#include <algorithm>

#include "platform/memory.h"
#include "platform/stack.h"
#include "program/arenas.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/messages.h"
#include "program/parse.h"
#include "values/convert.h"
#include "values/functions.h"
#include "values/held_arguments.h"
#include "values/operator_strength.h"
#include "values/operators.h"
#include "values/relations.h"
#include "values/screen_function.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane {

HeldArguments held_arguments;

namespace {

Value evaluate_from(Cursor& cursor, int minimum);
Value evaluate_signed(Cursor& cursor);

// What a name that nothing else explains reads as. It is not created: only assignment and the like do that.
Value unset_variable(const char* name) {
    const Type type = type_of_name(name);
    if (type == Type::STRING) return Value::of_string(nullptr, 0);
    return is_floating(type) ? Value::of_real(0, type) : Value::of_integer(0, type);
}

Value load_scalar(const VariableEntry& entry) {
    return load({const_cast<std::uint8_t*>(entry.storage), entry.type});
}

Value value_of_number(const Token& number) {
    return is_integer(number.value_type) ? Value::of_integer(number.number.integer, number.value_type)
                                         : Value::of_real(number.number.real, number.value_type);
}

bool is_known_scalar(const Token& name) {
    return name.resolution == RESOLVED_SCALAR && name.generation == arenas.generation;
}

Value evaluate_bare_name(Cursor& cursor) {
    Token& name = *cursor++;
    if (is_known_scalar(name)) return load_scalar(*static_cast<VariableEntry*>(name.cached));
    if (name.resolution == RESOLVED_FUNCTION) return static_cast<const BuiltInFunction*>(name.cached)->bare();
    if (const BuiltInFunction* function = find_bare_function(name.name)) {
        name.resolution = RESOLVED_FUNCTION;
        name.cached = const_cast<BuiltInFunction*>(function);
        return function->bare();
    }
    if (UserFunction* function = find_user_function(name.name);
        function != nullptr && function->parameter_count == 0)
        return call_user_function(*function, nullptr, 0);
    VariableEntry* entry = find_variable(name.name, false);
    if (entry == nullptr) return unset_variable(name.name);
    remember_variable(name, entry);
    return load_scalar(*entry);
}

Value call_with_several(const BuiltInFunction& function, Cursor& cursor) {
    const ArgumentCounts counts = function.arguments.counts();
    Value arguments[most_arguments];
    const int count = read_arguments(cursor, arguments, counts.fewest, counts.most);
    return count == 0 ? Value::nothing() : function.several(arguments, count);
}

// Calls a built-in function whose "(" is at the cursor.
Value call_function(const BuiltInFunction& function, Cursor& cursor) {
    if (!function.arguments.has_one()) {
        const bool reads_itself = function.arguments.is_read_by_function();
        return reads_itself ? function.call(cursor) : call_with_several(function, cursor);
    }
    ++cursor;
    const Value argument = evaluate(cursor);
    if (error_pending() || !expect(cursor, ')', message::expected_right_parenthesis)) return Value::nothing();
    return function.unary(argument);
}

Value evaluate_element(Token& name, Cursor& cursor) {
    VariableEntry* entry = find_array(name);
    if (entry == nullptr) return fail(message::array_not_dimensioned);
    const Type type = entry->type;
    std::uint8_t* address = element_address(*entry, cursor);
    return address == nullptr ? Value::nothing() : load({address, type});
}

// A name in front of "(".
Value evaluate_call(Cursor& cursor) {
    Token& name = *cursor++;
    if (name.resolution == RESOLVED_FUNCTION)
        return call_function(*static_cast<const BuiltInFunction*>(name.cached), cursor);
    if (is_user_function_name(name.name)) return evaluate_user_function(name, cursor);
    if (const BuiltInFunction* function = find_called_function(name.name)) {
        name.resolution = RESOLVED_FUNCTION;
        name.cached = const_cast<BuiltInFunction*>(function);
        return call_function(*function, cursor);
    }
    return evaluate_element(name, cursor);
}

Value evaluate_parenthesised(Cursor& cursor) {
    if (stack_exhausted()) return fail(message::out_of_memory);
    ++cursor;
    const Value value = evaluate(cursor);
    if (!error_pending()) expect(cursor, ')', message::expected_right_parenthesis);
    return value;
}

Value evaluate_primary(Cursor& cursor) {
    switch (cursor->kind) {
        case NUMBER:
            return value_of_number(*cursor++);
        case STRING_LITERAL: {
            const Token& literal = *cursor++;
            return Value::of_string(literal.string.bytes, literal.string.length);
        }
        case '(':
            return evaluate_parenthesised(cursor);
        case KW_SCREEN:
            return screen_function(cursor);
        case IDENTIFIER:
            return cursor[1].kind == '(' ? evaluate_call(cursor) : evaluate_bare_name(cursor);
        default:
            return fail(message::syntax_error_lower);
    }
}

// A primary with its exponents. The operand of "^" is signed and takes a power itself, so "^" associates to
// the right, unlike the other operators (deliberate).
Value evaluate_power(Cursor& cursor) {
    Value value = evaluate_primary(cursor);
    while (cursor->kind == '^' && !error_pending()) {
        ++cursor;
        const Value exponent = evaluate_signed(cursor);
        if (error_pending()) return exponent;
        value = power(value, exponent);
    }
    return value;
}

Value evaluate_signed(Cursor& cursor) {
    bool negative = false;
    Value value;
    while (cursor->kind == '+')
        ++cursor;
    if (cursor->kind == '-') {
        ++cursor;
        negative = true;
        value = evaluate_signed(cursor);
    } else {
        value = evaluate_power(cursor);
    }
    return negative && !error_pending() ? negate(value) : value;
}

Value apply_relation(std::uint8_t relation, const Value& left, const Value& right) {
    const int order = compare(left, right);
    const std::uint8_t outcome = order < 0 ? LESS : order > 0 ? GREATER : EQUAL;
    return Value::of_truth((relation & outcome) != 0);
}

Value evaluate_not(Cursor& cursor) {
    ++cursor;
    const std::int64_t operand = to_integer(evaluate_from(cursor, relational_strength));
    return Value::of_integer(~operand);
}

Value evaluate_from(Cursor& cursor, int minimum) {
    Value left = cursor->kind == KW_NOT ? evaluate_not(cursor) : evaluate_signed(cursor);
    for (;;) {
        const std::uint8_t operation = cursor->kind;
        const int strength = operator_strengths[operation];
        if (strength < minimum || error_pending()) return left;
        const bool relational = strength == relational_strength;
        const std::uint8_t relation = relational ? read_relation(cursor) : 0;
        if (!relational) ++cursor;
        const Value right = evaluate_from(cursor, strength + 1);
        if (error_pending()) return right;
        if (relational)
            left = apply_relation(relation, left, right);
        else if (strength > relational_strength)
            left = arithmetic(operation, left, right);
        else
            left = logical(operation, left, right);
    }
}

// Whether nothing goes on with the operand in front of the token.
bool ends_expression(const Token* at) {
    return operator_strengths[at->kind] == 0 && at->kind != '^';
}

}  // namespace

Value evaluate_unheld(Cursor& cursor) {
    return evaluate_from(cursor, weakest_strength);
}

// Most arguments are a number or a variable.
[[gnu::noinline]] Value evaluate(Cursor& cursor) {
    Token& first = *cursor;
    if (first.kind == NUMBER && ends_expression(&first + 1)) {
        ++cursor;
        return value_of_number(first);
    }
    if (first.kind == IDENTIFIER && is_known_scalar(first) && ends_expression(&first + 1)) {
        ++cursor;
        return load_scalar(*static_cast<VariableEntry*>(first.cached));
    }
    return held_arguments.in_use ? evaluate_argument(cursor) : evaluate_unheld(cursor);
}

std::int64_t evaluate_integer(Cursor& cursor) {
    const Value value = evaluate(cursor);
    return error_pending() ? 0 : to_integer(value);
}

bool evaluate_truth(Cursor& cursor) {
    const Value value = evaluate(cursor);
    if (error_pending()) return false;
    if (is_integer(value.type)) return value.integer != 0;
    if (is_floating(value.type)) return value.real != 0.0;
    raise(message::type_mismatch);
    return false;
}

Value evaluate_string(Cursor& cursor) {
    const Value value = evaluate(cursor);
    if (error_pending() || value.type == Type::STRING) return value;
    raise(message::type_mismatch);
    return Value::nothing();
}

std::int64_t evaluate_line_number(Cursor& cursor) {
    const std::int64_t number = evaluate_integer(cursor);
    if (!error_pending() && number < 0) raise(message::illegal_function_call);
    return error_pending() ? 0 : number;
}

std::uint32_t evaluate_text(Cursor& cursor, char* buffer, std::uint32_t capacity) {
    buffer[0] = 0;
    const Value text = evaluate_string(cursor);
    if (error_pending()) return 0;
    const std::uint32_t length = std::min(text.length, capacity - 1);
    copy_bytes(buffer, text.bytes, length);
    buffer[length] = 0;
    return length;
}

}  // namespace korvane
