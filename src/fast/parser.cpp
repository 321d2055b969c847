// This parser follows the grammar of values/evaluator.cpp but evaluates nothing: it notes the parts of the
// expression as nodes. Arguments and subscripts get their steps at once, held by the bracket or comma in
// front of them.
#include <string_view>

#include "fast/element_steps.h"
#include "fast/expression.h"
#include "fast/function_steps.h"
#include "fast/nodes.h"
#include "fast/records.h"
#include "fast/text_steps.h"
#include "program/arenas.h"
#include "program/keywords.h"
#include "values/functions.h"
#include "values/operator_strength.h"
#include "values/promotion.h"
#include "values/relations.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fast {

NodePool pool;

namespace {

// What names without a variable are read from: a zero of every type, and an empty string's descriptor.
constexpr StringDescriptor absent{.length = 0, .zero = 0, .bytes = nullptr};

// An integer expression may be computed in doubles when every intermediate result is exact and none can be a
// negative zero, which integers do not have.
bool exact_in_doubles(const Node& node) {
    if (!is_integer(node.type) || node.bound > exact_integers) return false;
    if (node.form == Form::VARIABLE || node.form == Form::LITERAL || node.form == Form::ELEMENT) return true;
    return node.form == Form::BINARY && (node.token->kind == '+' || node.token->kind == '-') &&
           node_at(node.left).exact && node_at(node.right).exact;
}

std::int16_t add(const Node& node) {
    if (pool.progress.count == static_cast<std::int16_t>(pool.nodes.size())) return none;
    Node& added = pool.nodes[static_cast<std::size_t>(pool.progress.count)];
    added = node;
    added.exact = exact_in_doubles(node);
    return pool.progress.count++;
}

double bound_of(Type type) {
    if (type == Type::INTEGER) return 32768;
    if (type == Type::LONG) return 2147483648.0;
    return unbounded;
}

std::int16_t parse_variable(Token*& at) {
    Token* name = at++;
    if (find_bare_function(name->name) != nullptr || is_user_function_name(name->name)) return none;
    const VariableEntry* entry = find_variable(name->name, false);
    // A name without a variable reads as 0 or the empty text until somebody creates the variable.
    if (entry == nullptr) variables.absence_assumed = true;
    const Type type = entry == nullptr ? type_of_name(name->name) : entry->type;
    const void* storage = entry == nullptr ? static_cast<const void*>(&absent) : entry->storage;
    return add({.form = Form::VARIABLE,
                .type = type,
                .token = name,
                .operand = storage,
                .name = {},
                .function = nullptr,
                .left = none,
                .right = none,
                .bound = bound_of(type)});
}

std::int16_t parse_literal(Token*& at) {
    Token* literal = at++;
    const bool text = literal->kind == STRING_LITERAL;
    return add({.form = Form::LITERAL,
                .type = text ? Type::STRING : literal->value_type,
                .token = literal,
                .operand = nullptr,
                .name = {},
                .function = nullptr,
                .left = none,
                .right = none,
                .bound = text ? 0 : __builtin_fabs(literal->number.as_double)});
}

// One argument or subscript behind `mark`, held by it.
bool parse_held(Token* mark, Token*& at, Type& type) {
    const std::int16_t argument = parse_expression(at, 1);
    if (argument == none) return false;
    type = node_at(argument).type;
    Side side;
    if (!emit(argument, domain_of(type), side)) return false;
    hold(mark, side);
    return true;
}

// The arguments from "(" to ")", each held by the mark in front of it. `accept` judges the type
// of the n-th one.
template <typename Accept>
bool parse_arguments(Token* bracket, Token*& at, int& count, Accept accept) {
    Token* mark = bracket;
    at = bracket + 1;
    for (count = 0;; ++count) {
        Type type;
        if (!parse_held(mark, at, type) || !accept(count, type)) return false;
        if (at->kind != ',') break;
        as<MarkRecord>(mark).next_mark = at;
        mark = at++;
    }
    ++count;
    as<MarkRecord>(mark).next_mark = nullptr;
    return (at++)->kind == ')';
}

std::int16_t parse_element(Token*& at) {
    Token* name = at;
    Type type;
    if (!bind_element(name, at, type)) return none;
    return add({.form = Form::ELEMENT,
                .type = type,
                .token = name + 1,
                .operand = nullptr,
                .name = {},
                .function = nullptr,
                .left = none,
                .right = none,
                .bound = bound_of(type)});
}

// The definition's body, held by the function's head, and the parameters' variables.
bool hold_body(UserFunction& function) {
    for (std::int32_t i = 0; i < function.parameter_count; ++i) {
        function.entries[i] = find_variable(function.parameters[i], false);
        if (function.entries[i] == nullptr || !is_numeric(function.entries[i]->type)) return false;
    }
    Token* at = function.body;
    Type type;
    return parse_held(&function.head, at, type) && at->kind == END_OF_LINE && is_numeric(type);
}

// Looks at the body once for all calls: again only in a new generation, and one that had no specialised form
// when variables have been created since. A body that is being looked at calls its own function.
bool specialise_body(UserFunction& function) {
    const bool known = function.generation == arenas.generation;
    if (known && (function.has_steps || function.variables_seen == variables.count))
        return function.has_steps;
    function.generation = arenas.generation;
    function.variables_seen = variables.count;
    function.has_steps = false;
    const NodePool::Progress outer = pool.progress;
    pool.progress = {.count = outer.count, .allocates = false, .depth = 0, .deepest = 0};
    function.has_steps = hold_body(function);
    function.depth = pool.progress.deepest;
    function.allocates = pool.progress.allocates;
    pool.progress = outer;
    return function.has_steps;
}

Type body_type(const UserFunction& function) {
    return static_cast<Type>(function.head.value_type);
}

std::int16_t parse_user_call(Token*& at) {
    Token* name = at;
    UserFunction* function = find_user_function(name->name);
    if (function == nullptr || function->parameter_count == 0) return none;
    int count;
    if (!specialise_body(*function) || !note_levels(levels_of_call + function->depth) ||
        !parse_arguments(name + 1, at, count, [](int, Type argument) { return is_numeric(argument); }) ||
        count != function->parameter_count) {
        return none;
    }
    if (function->allocates) pool.progress.allocates = true;
    return add({.form = Form::USER,
                .type = body_type(*function),
                .token = name + 1,
                .operand = nullptr,
                .name = {},
                .function = function,
                .left = none,
                .right = none,
                .bound = unbounded});
}

std::int16_t parse_built_in_call(const BuiltInFunction& function, Token*& at) {
    Token* name = at;
    Token* bracket = name + 1;
    const bool is_text = gives_text(name->name);
    if (!is_text && !gives_number(name->name)) return none;
    FunctionArguments arguments{function.arguments.text()};
    Type last = Type::NONE;
    int count;
    const auto accept = [&](int, Type type) {
        last = type;
        return arguments.take(type);
    };
    if (!parse_arguments(bracket, at, count, accept) || !arguments.are_complete()) return none;
    if (is_text) {
        set_text_function_step(bracket, name->name, last);
        pool.progress.allocates = true;
    }
    return add({.form = is_text ? Form::TEXT_CALL : Form::CALL,
                .type = is_text ? Type::STRING : function_result(name->name, last),
                .token = bracket,
                .operand = nullptr,
                .name = name->name,
                .function = nullptr,
                .left = none,
                .right = none,
                .bound = unbounded});
}

std::int16_t parse_name(Token*& at) {
    if (at[1].kind != '(') return parse_variable(at);
    if (is_user_function_name(at->name)) return parse_user_call(at);
    const BuiltInFunction* function = find_called_function(at->name);
    return function != nullptr ? parse_built_in_call(*function, at) : parse_element(at);
}

std::int16_t parse_primary(Token*& at) {
    switch (at->kind) {
        case NUMBER:
        case STRING_LITERAL:
            return parse_literal(at);
        case IDENTIFIER:
            return parse_name(at);
        case '(': {
            const std::int16_t inner = parse_expression(++at, 1);
            return inner == none || (at++)->kind != ')' ? none : inner;
        }
        default:
            return none;
    }
}

std::int16_t add_operator(Form form, Type type, Token* token, std::int16_t left, std::int16_t right,
                          double bound) {
    return add({.form = form,
                .type = type,
                .token = token,
                .operand = nullptr,
                .name = {},
                .function = nullptr,
                .left = left,
                .right = right,
                .bound = bound});
}

std::int16_t parse_signed(Token*& at) {
    while (at->kind == '+')
        ++at;
    if (at->kind == '-') {
        const Level level;
        if (level.too_deep()) return none;
        Token* sign = at++;
        const std::int16_t operand = parse_signed(at);
        if (operand == none || !is_numeric(node_at(operand).type)) return none;
        return add_operator(Form::SIGN, node_at(operand).type, sign, none, operand, node_at(operand).bound);
    }
    std::int16_t left = parse_primary(at);
    while (left != none && at->kind == '^') {
        const Level level;
        if (level.too_deep()) return none;
        Token* operation = at++;
        const std::int16_t right = parse_signed(at);
        if (right == none || !is_numeric(node_at(left).type) || !is_numeric(node_at(right).type)) return none;
        left = add_operator(Form::BINARY, Type::DOUBLE, operation, left, right, unbounded);
    }
    return left;
}

// The static type of an arithmetic or logical operator's result; NONE where the general evaluator has an
// error to raise.
Type result_type(std::uint8_t operation, Type left, Type right) {
    if (left == Type::STRING && right == Type::STRING) return operation == '+' ? Type::STRING : Type::NONE;
    if (left == Type::STRING || right == Type::STRING) return Type::NONE;
    switch (operation) {
        case '+':
        case '-':
        case '*':
            return sum_type(left, right);
        case '/':
            return quotient_type(left, right);
        default:
            return Type::INT64;
    }
}

double result_bound(std::uint8_t operation, double left, double right) {
    switch (operation) {
        case '+':
        case '-':
            return left + right;
        case '*':
            return left * right;
        default:
            return unbounded;
    }
}

std::int16_t parse_relation(Token*& at, std::int16_t left) {
    Token* operation = at;
    read_relation(at);
    const bool left_allocates = pool.progress.allocates;
    pool.progress.allocates = false;
    const std::int16_t right = parse_expression(at, relational_strength + 1);
    if (right == none) return none;
    const bool both_allocate = left_allocates && pool.progress.allocates;
    pool.progress.allocates = left_allocates || pool.progress.allocates;
    if ((node_at(left).type == Type::STRING) != (node_at(right).type == Type::STRING)) return none;
    const std::int16_t relation = add_operator(Form::RELATION, Type::INT64, operation, left, right, 1);
    if (relation != none) pool.nodes[static_cast<std::size_t>(relation)].keeps_order = both_allocate;
    return relation;
}

std::int16_t parse_binary(Token*& at, std::int16_t left) {
    Token* operation = at++;
    const std::int16_t right = parse_expression(at, operator_strengths[operation->kind] + 1);
    if (right == none) return none;
    const Node& a = node_at(left);
    const Node& b = node_at(right);
    const Type type = result_type(operation->kind, a.type, b.type);
    if (type == Type::NONE) return none;
    if (type == Type::STRING) pool.progress.allocates = true;
    return add_operator(Form::BINARY, type, operation, left, right,
                        result_bound(operation->kind, a.bound, b.bound));
}

}  // namespace

bool bind_element(Token* name, Token*& at, Type& type) {
    const VariableEntry* array = find_variable(name->name, true);
    if (array == nullptr) return false;
    int count;
    if (!parse_arguments(name + 1, at, count, [](int, Type subscript) { return is_numeric(subscript); }) ||
        static_cast<std::uint64_t>(count) != array->array->dimensions) {
        return false;
    }
    as<ElementRecord>(name + 1).array = array->array;
    type = array->type;
    return true;
}

std::int16_t parse_expression(Token*& at, int minimum) {
    const Level level;
    if (level.too_deep()) return none;
    std::int16_t left;
    if (at->kind == KW_NOT) {
        Token* operation = at++;
        const std::int16_t operand = parse_expression(at, relational_strength);
        if (operand == none || !is_numeric(node_at(operand).type)) return none;
        left = add_operator(Form::NOT, Type::INT64, operation, none, operand, unbounded);
    } else {
        left = parse_signed(at);
    }
    while (left != none && operator_strengths[at->kind] >= minimum) {
        const bool relational = operator_strengths[at->kind] == relational_strength;
        left = relational ? parse_relation(at, left) : parse_binary(at, left);
    }
    return left;
}

}  // namespace korvane::fast
