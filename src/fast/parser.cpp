// This parser follows the grammar of values/evaluator.cpp but evaluates nothing: it notes the parts of the
// expression as nodes.
#include <string_view>

#include "fast/expression.h"
#include "fast/function_steps.h"
#include "fast/nodes.h"
#include "fast/statement.h"
#include "fast/text_steps.h"
#include "program/arenas.h"
#include "program/keywords.h"
#include "values/array_keepers.h"
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
    if (node.form == Form::variable || node.form == Form::literal || node.form == Form::element) return true;
    return node.form == Form::binary && (node.token->kind == '+' || node.token->kind == '-') &&
           node_at(node.left).exact && node_at(node.right).exact;
}

// Adds a node to the pool: its index, or `none` when the pool is full.
std::int16_t add(const Node& node) {
    if (pool.progress.count == static_cast<std::int16_t>(pool.nodes.size())) return none;
    Node& added = node_at(pool.progress.count);
    added = node;
    added.exact = exact_in_doubles(node);
    return pool.progress.count++;
}

Node make(Form form, Type type, Token* token, double bound) {
    Node node{};
    node.form = form;
    node.type = type;
    node.token = token;
    node.left = none;
    node.right = none;
    node.bound = bound;
    return node;
}

double bound_of(Type type) {
    if (type == Type::INTEGER) return 32768;
    if (type == Type::LONG) return 2147483648.0;
    return unbounded;
}

std::int16_t add_bare_call(const BuiltInFunction& function, Token* name) {
    const Type type = bare_function_result(name->name);
    if (type == Type::STRING) return none;
    Node node = make(Form::bare_call, type, name, unbounded);
    node.built_in = &function;
    node.draws = draws_random(name->name);
    return add(node);
}

bool specialise_body(UserFunction& function);

std::int16_t add_bare_user_call(Token* name) {
    UserFunction* function = find_user_function(name->name);
    if (function == nullptr || function->parameter_count != 0 || !specialise_body(*function) ||
        !note_levels(levels_of_call + function->depth))
        return none;
    const Type type = function->head.value_type;
    if (type == Type::STRING) return none;
    Node node = make(Form::bare_user_call, type, name, unbounded);
    node.function = function;
    node.allocates = function->allocates;
    node.draws = function->draws;
    return add(node);
}

std::int16_t parse_variable(Token*& at) {
    Token* name = at++;
    if (is_user_function_name(name->name)) return add_bare_user_call(name);
    if (const BuiltInFunction* function = find_bare_function(name->name))
        return add_bare_call(*function, name);
    const VariableEntry* entry = find_variable(name->name, false);
    // A name without a variable reads as 0 or the empty text until somebody creates the variable.
    if (entry == nullptr) assume_absence(name->name);
    const Type type = entry == nullptr ? type_of_name(name->name) : entry->type;
    Node node = make(Form::variable, type, name, bound_of(type));
    node.storage = entry == nullptr ? static_cast<const void*>(&absent) : entry->storage;
    return add(node);
}

std::int16_t parse_literal(Token*& at) {
    Token* literal = at++;
    if (literal->kind == STRING_LITERAL) return add(make(Form::literal, Type::STRING, literal, 0));
    const double bound = __builtin_fabs(literal->number.as_double);
    return add(make(Form::literal, literal->value_type, literal, bound));
}

// The arguments of a call or the subscripts of an element.
struct Arguments {
    std::int16_t first;
    int count;
    Type last_type;
};

// One argument behind `mark`, without a next one.
std::int16_t parse_argument(Token* mark, Token*& at) {
    const std::int16_t value = parse_expression(at, 1);
    if (value == none) return none;
    Node argument = make(Form::argument, node_at(value).type, mark, unbounded);
    argument.value = value;
    argument.take_too(node_at(value));
    return add(argument);
}

// The arguments from "(" to ")". `accept` judges the type of each, one after the other.
template <typename Accept>
bool parse_arguments(Token* bracket, Token*& at, Arguments& arguments, Accept accept) {
    arguments = {.first = none, .count = 0, .last_type = Type::NONE};
    std::int16_t* link = &arguments.first;
    at = bracket;
    do {
        Token* mark = at++;
        const std::int16_t index = parse_argument(mark, at);
        if (index == none || !accept(node_at(index).type)) return false;
        *link = index;
        link = &node_at(index).next_argument;
        ++arguments.count;
        arguments.last_type = node_at(index).type;
    } while (at->kind == ',');
    return (at++)->kind == ')';
}

std::int16_t add_call(Form form, Type type, Token* bracket, const Arguments& arguments, double bound) {
    Node node = make(form, type, bracket, bound);
    node.first_argument = arguments.first;
    node.allocates = form == Form::text_call;
    for (std::int16_t i = arguments.first; i != none; i = node_at(i).next_argument)
        node.take_too(node_at(i));
    return add(node);
}

// The definition's body, held by the function's head, and the parameters' variables.
bool hold_body(UserFunction& function) {
    bool takes_text = false;
    for (std::int32_t i = 0; i < function.parameter_count; ++i) {
        function.entries[i] = find_variable(function.parameters[i], false);
        if (function.entries[i] == nullptr) return false;
        takes_text |= function.entries[i]->type == Type::STRING;
    }
    Token* at = function.body;
    const std::int16_t body = parse_expression(at, 1);
    if (body == none || at->kind != END_OF_LINE) return false;
    function.head.value_type = node_at(body).type;
    function.allocates = takes_text || node_at(body).allocates;
    function.draws = node_at(body).draws;
    if (!plan(body, domain_of(function.head.value_type))) return false;
    hold(&function.head, emit(body));
    return true;
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
    pool.progress = {.count = outer.count, .depth = 0, .deepest = 0};
    function.has_steps = hold_body(function);
    function.depth = pool.progress.deepest;
    pool.progress = outer;
    return function.has_steps;
}

std::int16_t parse_user_call(Token*& at) {
    Token* bracket = at + 1;
    UserFunction* function = find_user_function(at->name);
    if (function == nullptr || function->parameter_count == 0) return none;
    Arguments arguments;
    VariableEntry* const* parameter = function->entries;
    VariableEntry* const* const end = parameter + function->parameter_count;
    const auto accept = [&](Type type) {
        return parameter != end && (type == Type::STRING) == ((*parameter++)->type == Type::STRING);
    };
    if (!specialise_body(*function) || !note_levels(levels_of_call + function->depth) ||
        !parse_arguments(bracket, at, arguments, accept) || parameter != end)
        return none;
    const std::int16_t call =
        add_call(Form::user_call, function->head.value_type, bracket, arguments, unbounded);
    if (call == none) return none;
    node_at(call).function = function;
    node_at(call).allocates |= function->allocates;
    node_at(call).draws |= function->draws;
    return call;
}

std::int16_t parse_built_in_call(const BuiltInFunction& function, Token*& at) {
    const Token* name = at;
    Token* bracket = at + 1;
    const bool is_text = gives_text(name->name);
    if (!is_text && !gives_number(name->name)) return none;
    FunctionArguments taken{function.arguments.text()};
    Arguments arguments;
    if (!parse_arguments(bracket, at, arguments, [&](Type type) { return taken.take(type); }) ||
        !taken.are_complete())
        return none;
    const Type type = is_text ? Type::STRING : function_result(name->name, arguments.last_type);
    const std::int16_t call =
        add_call(is_text ? Form::text_call : Form::call, type, bracket, arguments, unbounded);
    if (call == none) return none;
    node_at(call).built_in = &function;
    node_at(call).draws |= draws_random(name->name);
    return call;
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
    Node node = make(form, type, token, bound);
    node.left = left;
    node.right = right;
    node.allocates = type == Type::STRING;
    if (left != none) node.take_too(node_at(left));
    node.take_too(node_at(right));
    return add(node);
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
        return add_operator(Form::sign, node_at(operand).type, sign, none, operand, node_at(operand).bound);
    }
    std::int16_t left = parse_primary(at);
    while (left != none && at->kind == '^') {
        const Level level;
        if (level.too_deep()) return none;
        Token* operation = at++;
        const std::int16_t right = parse_signed(at);
        if (right == none || !is_numeric(node_at(left).type) || !is_numeric(node_at(right).type)) return none;
        left = add_operator(Form::binary, Type::DOUBLE, operation, left, right, unbounded);
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
    const std::int16_t right = parse_expression(at, relational_strength + 1);
    if (right == none) return none;
    if ((node_at(left).type == Type::STRING) != (node_at(right).type == Type::STRING)) return none;
    return add_operator(Form::relation, Type::INT64, operation, left, right, 1);
}

std::int16_t parse_binary(Token*& at, std::int16_t left) {
    Token* operation = at++;
    const std::int16_t right = parse_expression(at, operator_strengths[operation->kind] + 1);
    if (right == none) return none;
    const Node& a = node_at(left);
    const Node& b = node_at(right);
    const Type type = result_type(operation->kind, a.type, b.type);
    if (type == Type::NONE) return none;
    return add_operator(Form::binary, type, operation, left, right,
                        result_bound(operation->kind, a.bound, b.bound));
}

// Notes that the array's address is about to be kept. Arguments look at more than the generation, and machine
// code has been noted as a whole.
void note_keeper_of(const VariableEntry& array, const Token* name) {
    if (record_of(name) >= max_token_records)
        note_unknown_array_keeper();  // a user function's body, which all that call it share
    else if (state.specialised != nullptr)
        note_array_keeper(array.array, state.specialised);
}

}  // namespace

std::int16_t parse_name(Token*& at) {
    if (at[1].kind != '(') return parse_variable(at);
    if (is_user_function_name(at->name)) return parse_user_call(at);
    const BuiltInFunction* function = find_called_function(at->name);
    return function != nullptr ? parse_built_in_call(*function, at) : parse_element(at);
}

std::int16_t parse_element(Token*& at) {
    const VariableEntry* array = find_variable(at->name, true);
    if (array == nullptr) return none;
    note_keeper_of(*array, at);
    Token* bracket = at + 1;
    Arguments subscripts;
    if (!parse_arguments(bracket, at, subscripts, is_numeric) ||
        static_cast<std::uint64_t>(subscripts.count) != array->array->dimensions)
        return none;
    const std::int16_t element =
        add_call(Form::element, array->type, bracket, subscripts, bound_of(array->type));
    if (element != none) node_at(element).array = array->array;
    return element;
}

std::int16_t parse_expression(Token*& at, int minimum) {
    const Level level;
    if (level.too_deep()) return none;
    std::int16_t left;
    if (at->kind == KW_NOT) {
        Token* operation = at++;
        const std::int16_t operand = parse_expression(at, relational_strength);
        if (operand == none || !is_numeric(node_at(operand).type)) return none;
        left = add_operator(Form::complement, Type::INT64, operation, none, operand, unbounded);
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
