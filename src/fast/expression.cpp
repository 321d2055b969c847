// The parser of this file follows the grammar of values/evaluator.cpp but evaluates nothing: it notes the
// parts of the expression as nodes with their static types, then emits steps for them, operands before
// operators.
#include "fast/expression.h"

#include <array>
#include <string_view>

#include "core/arenas.h"
#include "core/keywords.h"
#include "fast/element_steps.h"
#include "fast/function_steps.h"
#include "fast/number_steps.h"
#include "fast/real_steps.h"
#include "fast/single_steps.h"
#include "fast/text_steps.h"
#include "fast/whole_steps.h"
#include "values/functions.h"
#include "values/operator_strength.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

enum class Form : std::uint8_t {
    VARIABLE,
    LITERAL,
    BINARY,
    RELATION,
    SIGN,
    NOT,
    ELEMENT,
    CALL,
    TEXT_CALL,
    USER
};

struct Node {
    Form form;
    Type type;
    Token* token;           // the operator, the bracket or the literal
    const void* operand;    // a variable's storage
    std::string_view name;  // of a called function
    UserFunction* function;
    std::int16_t left;  // nodes of the operands; the only operand of a sign is the right one
    std::int16_t right;
    double bound;  // of an integer: its magnitude is at most this
};

// What names without a variable are read from: a zero of every type, and an empty string's descriptor.
constexpr StringDescriptor absent{.length = 0, .zero = 0, .bytes = nullptr};

constexpr std::int16_t none = -1;
constexpr double unbounded = 1e300;
constexpr double exact_integers = 9007199254740992.0;  // doubles hold every integer up to 2^53

}  // namespace

// The nodes of the expression being looked at, and how many. Expressions inside brackets are finished before
// the outer ones go on, so one pool serves them all; a line's tokens bound how many there can be.
struct NodePool {
    std::array<Node, 4 * max_token_records> nodes;
    std::int16_t count;
    bool allocates;
};
static NodePool pool;

namespace {

std::int16_t parse_from(Token*& at, int minimum);
bool emit(std::int16_t index, Domain wanted, Side& side);

std::int16_t add(const Node& node) {
    if (pool.count == static_cast<std::int16_t>(pool.nodes.size())) return none;
    pool.nodes[static_cast<std::size_t>(pool.count)] = node;
    return pool.count++;
}

const Node& node_at(std::int16_t index) {
    return pool.nodes[static_cast<std::size_t>(index)];
}

double bound_of(Type type) {
    if (type == Type::INTEGER) return 32768;
    if (type == Type::LONG) return 2147483648.0;
    return unbounded;
}

// ---- Parsing
// ----------------------------------------------------------------------------------------------------

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
    const std::int16_t argument = parse_from(at, 1);
    if (argument == none) return false;
    type = node_at(argument).type;
    Side side;
    if (!emit(argument, domain_of(type), side)) return false;
    hold(mark, side);
    return true;
}

// The arguments from "(" to ")", each held by the mark in front of it. `accept` judges the type of the n-th
// one.
template <typename Accept>
bool parse_arguments(Token* bracket, Token*& at, int& count, Accept accept) {
    Token* mark = bracket;
    at = bracket + 1;
    for (count = 0;; ++count) {
        Type type;
        if (!parse_held(mark, at, type) || !accept(count, type)) return false;
        if (at->kind != ',') break;
        mark->step.left_inner = at;
        mark = at++;
    }
    ++count;
    mark->step.left_inner = nullptr;
    return (at++)->kind == ')';
}

bool bind_element(Token* name, Token*& at, Type& type) {
    const VariableEntry* array = find_variable(name->name, true);
    if (array == nullptr) return false;
    int count;
    if (!parse_arguments(name + 1, at, count, [](int, Type subscript) { return is_numeric(subscript); }) ||
        static_cast<std::uint64_t>(count) != array->array->dimensions) {
        return false;
    }
    name[1].step.left_operand = array->array;
    type = array->type;
    return true;
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
bool specialise_body(UserFunction& function) {
    for (std::int32_t i = 0; i < function.parameter_count; ++i) {
        function.entries[i] = find_variable(function.parameters[i], false);
        if (function.entries[i] == nullptr || !is_numeric(function.entries[i]->type)) return false;
    }
    Token* at = function.body;
    Type type;
    return parse_held(&function.head, at, type) && at->kind == END_OF_LINE && is_numeric(type);
}

Type body_type(const UserFunction& function) {
    return static_cast<Type>(function.head.value_type);
}

std::int16_t parse_user_call(Token*& at) {
    Token* name = at;
    UserFunction* function = find_user_function(name->name);
    if (function == nullptr || function->being_specialised || function->parameter_count == 0) return none;
    function->being_specialised = true;
    const bool body_is_good = specialise_body(*function);
    function->being_specialised = false;
    int count;
    if (!body_is_good ||
        !parse_arguments(name + 1, at, count, [](int, Type argument) { return is_numeric(argument); }) ||
        count != function->parameter_count) {
        return none;
    }
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

std::int16_t parse_built_in_call(Token*& at) {
    Token* name = at;
    Token* bracket = name + 1;
    const std::string_view arguments = text_function_arguments(name->name);
    const std::size_t required =
        arguments.find('?') == std::string_view::npos ? arguments.size() : arguments.find('?');
    Type argument = Type::NONE;
    int count;
    const auto accept = [&](int n, Type type) {
        argument = type;
        if (arguments.empty()) return n == 0;
        // The marks behind "?" are numbers in every function there is.
        const auto position = static_cast<std::size_t>(n) + (static_cast<std::size_t>(n) >= required ? 1 : 0);
        return position < arguments.size() && (arguments[position] == 't') == (type == Type::STRING);
    };
    if (!parse_arguments(bracket, at, count, accept)) return none;
    Node node{.form = Form::CALL,
              .type = Type::STRING,
              .token = bracket,
              .operand = nullptr,
              .name = name->name,
              .function = nullptr,
              .left = none,
              .right = none,
              .bound = unbounded};
    if (!arguments.empty()) {
        if (static_cast<std::size_t>(count) < required) return none;
        node.form = Form::TEXT_CALL;
        pool.allocates = true;
    } else if (!function_result(name->name, argument, node.type)) {
        return none;
    }
    return add(node);
}

std::int16_t parse_name(Token*& at) {
    if (at[1].kind != '(') return parse_variable(at);
    if (is_user_function_name(at->name)) return parse_user_call(at);
    return find_called_function(at->name) != nullptr ? parse_built_in_call(at) : parse_element(at);
}

std::int16_t parse_primary(Token*& at) {
    switch (at->kind) {
        case NUMBER:
        case STRING_LITERAL:
            return parse_literal(at);
        case IDENTIFIER:
            return parse_name(at);
        case '(': {
            const std::int16_t inner = parse_from(++at, 1);
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
        Token* sign = at++;
        const std::int16_t operand = parse_signed(at);
        if (operand == none || !is_numeric(node_at(operand).type)) return none;
        return add_operator(Form::SIGN, node_at(operand).type, sign, none, operand, node_at(operand).bound);
    }
    std::int16_t left = parse_primary(at);
    while (left != none && at->kind == '^') {
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
    const Type wider = left > right ? left : right;
    switch (operation) {
        case '+':
        case '-':
        case '*':
            return is_integer(wider) ? Type::INT64 : wider;
        case '/':
            return wider > Type::SINGLE ? wider : Type::SINGLE;
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
    Token* operation = at++;
    if (operation->kind == '<' && (at->kind == '=' || at->kind == '>')) ++at;
    if (operation->kind == '>' && at->kind == '=') ++at;
    const std::int16_t right = parse_from(at, relational_strength + 1);
    if (right == none) return none;
    if ((node_at(left).type == Type::STRING) != (node_at(right).type == Type::STRING)) return none;
    return add_operator(Form::RELATION, Type::INT64, operation, left, right, 1);
}

std::int16_t parse_binary(Token*& at, std::int16_t left) {
    Token* operation = at++;
    const std::int16_t right = parse_from(at, operator_strengths[operation->kind] + 1);
    if (right == none) return none;
    const Node& a = node_at(left);
    const Node& b = node_at(right);
    const Type type = result_type(operation->kind, a.type, b.type);
    if (type == Type::NONE) return none;
    if (type == Type::STRING) pool.allocates = true;
    return add_operator(Form::BINARY, type, operation, left, right,
                        result_bound(operation->kind, a.bound, b.bound));
}

std::int16_t parse_from(Token*& at, int minimum) {
    std::int16_t left;
    if (at->kind == KW_NOT) {
        Token* operation = at++;
        const std::int16_t operand = parse_from(at, relational_strength);
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

// ---- Emitting
// ---------------------------------------------------------------------------------------------------

Leaf leaf_of(Type type) {
    switch (type) {
        case Type::INTEGER:
            return I16;
        case Type::LONG:
            return I32;
        case Type::INT64:
            return I64;
        case Type::SINGLE:
            return F32;
        case Type::STRING:
            return TEXT_VARIABLE;
        default:
            return F64;
    }
}

void emit_leaf(const Node& node, Domain wanted, Side& side) {
    const bool whole = wanted == Domain::WHOLE && is_integer(node.type);
    side = {.kind = 0, .operand = node.operand, .inner = nullptr, .last = nullptr, .type = node.type};
    Leaf leaf = leaf_of(node.type);
    if (node.form == Form::LITERAL) {
        if (node.type == Type::STRING) {
            leaf = TEXT_LITERAL;
            side.operand = node.token;
        } else {
            leaf = whole ? I64 : F64;
            side.operand =
                whole ? static_cast<const void*>(&node.token->number.integer) : &node.token->number.as_double;
        }
    }
    side.kind = side_kind(leaf, false, whole ? Domain::WHOLE : Domain::REAL);
}

Side chain_of(Token* step, Domain domain, Type type) {
    step->step.next = nullptr;
    return {.kind = side_kind(COMPUTED, true, domain),
            .operand = nullptr,
            .inner = step,
            .last = step,
            .type = type};
}

// Whether an accumulator of the domain can start from the side, and go on from its last step.
bool carries(const Side& side, Domain domain) {
    const auto leaf = static_cast<Leaf>(side.kind & leaf_mask);
    const auto side_domain = static_cast<Domain>(side.kind >> domain_shift);
    if ((side.kind & has_chain) != 0) return side_domain == domain;
    switch (domain) {
        case Domain::REAL:
            return leaf <= I64;
        // A float holds these exactly; a LONG or INT64 it may not.
        case Domain::SINGLE:
            return leaf == F32 || leaf == F64 || leaf == I16;
        case Domain::WHOLE:
            return side_domain == Domain::WHOLE;
        default:
            return false;
    }
}

// Appends the operator, whose right side is set, to the left operand's chain.
Side append(Side left, Token* operation, Domain domain, Type type) {
    operation->step.next = nullptr;
    if ((left.kind & has_chain) != 0) {
        left.last->step.next = operation;
    } else {
        left.kind = side_kind(static_cast<Leaf>(left.kind & leaf_mask), true, domain);
        left.inner = operation;
    }
    left.last = operation;
    left.type = type;
    return left;
}

void hold_left(Token* operation, const Side& left) {
    operation->left_kind = left.kind;
    operation->step.left_operand = left.operand;
    operation->step.left_inner = left.inner;
}

// An integer expression may be computed in doubles when every intermediate result is exact and none can be a
// negative zero, which integers do not have.
bool exact_in_doubles(std::int16_t index) {
    const Node& node = node_at(index);
    if (!is_integer(node.type) || node.bound > exact_integers) return false;
    if (node.form == Form::VARIABLE || node.form == Form::LITERAL || node.form == Form::ELEMENT) return true;
    if (node.form != Form::BINARY || !exact_in_doubles(node.left) || !exact_in_doubles(node.right))
        return false;
    if (node.token->kind == '+' || node.token->kind == '-') return true;
    return false;
}

bool emit_binary(std::int16_t index, Domain wanted, Side& side) {
    const Node node = node_at(index);
    Domain domain = domain_of(node.type);
    if (domain == Domain::WHOLE && wanted != Domain::WHOLE && exact_in_doubles(index)) domain = Domain::REAL;
    Side left;
    Side right;
    if (!emit(node.left, domain, left) || !emit(node.right, domain, right)) return false;
    hold(node.token, right);
    if (domain == Domain::TEXT) {
        hold_left(node.token, left);
        set_concatenation_step(node.token);
        side = chain_of(node.token, domain, node.type);
        return true;
    }
    if (carries(left, domain)) {
        if (!set_chained_step(node.token, domain)) return false;
        side = append(left, node.token, domain, node.type);
        return true;
    }
    hold_left(node.token, left);
    if (!set_computed_step(node.token, domain)) return false;
    side = chain_of(node.token, domain, node.type);
    return true;
}

// Integers and floats are compared as doubles, which is exact while the integer is.
bool comparable_as_reals(const Node& node) {
    return !is_integer(node.type) || node.bound <= exact_integers;
}

bool emit_relation(const Node& node, Side& side) {
    const Node& a = node_at(node.left);
    const Node& b = node_at(node.right);
    Domain domain = Domain::REAL;
    if (a.type == Type::STRING) {
        domain = Domain::TEXT;
    } else if (is_integer(a.type) && is_integer(b.type)) {
        domain = Domain::WHOLE;
    } else if (!comparable_as_reals(a) || !comparable_as_reals(b)) {
        return false;
    }
    Side left;
    Side right;
    if (!emit(node.left, domain, left) || !emit(node.right, domain, right)) return false;
    hold_left(node.token, left);
    hold(node.token, right);
    set_comparison_step(node.token, domain);
    side = chain_of(node.token, Domain::WHOLE, node.type);
    return true;
}

bool emit_sign(const Node& node, Side& side) {
    const Domain domain = domain_of(node.type);
    Side operand;
    if (!emit(node.right, domain, operand)) return false;
    hold(node.token, operand);
    set_sign_step(node.token, domain);
    side = chain_of(node.token, domain, node.type);
    return true;
}

bool emit_not(const Node& node, Side& side) {
    Side operand;
    if (!emit(node.right, Domain::WHOLE, operand)) return false;
    hold(node.token, operand);
    set_not_step(node.token);
    side = chain_of(node.token, Domain::WHOLE, node.type);
    return true;
}

bool emit(std::int16_t index, Domain wanted, Side& side) {
    const Node node = node_at(index);
    Domain domain = domain_of(node.type);
    switch (node.form) {
        case Form::VARIABLE:
        case Form::LITERAL:
            emit_leaf(node, wanted, side);
            return true;
        case Form::BINARY:
            return emit_binary(index, wanted, side);
        case Form::RELATION:
            return emit_relation(node, side);
        case Form::SIGN:
            return emit_sign(node, side);
        case Form::NOT:
            return emit_not(node, side);
        case Form::ELEMENT:
            // A numeric element can be taken as a double at once.
            if (wanted == Domain::REAL && domain != Domain::TEXT && node.bound <= exact_integers)
                domain = wanted;
            if (is_floating(node.type) && wanted == Domain::REAL) domain = wanted;
            set_element_step(node.token, node.type, domain);
            break;
        case Form::CALL:
            set_function_step(node.token, node.name, domain);
            break;
        case Form::TEXT_CALL:
            set_text_function_step(node.token, node.name);
            break;
        case Form::USER:
            set_user_function_step(node.token, node.function, domain);
            break;
    }
    side = chain_of(node.token, domain, node.type);
    return true;
}

}  // namespace

Domain domain_of(Type type) {
    if (type == Type::STRING) return Domain::TEXT;
    if (type == Type::DOUBLE) return Domain::REAL;
    return type == Type::SINGLE ? Domain::SINGLE : Domain::WHOLE;
}

void hold(Token* host, const Side& side) {
    host->right_kind = side.kind;
    host->step.operand = side.operand;
    host->step.inner = side.inner;
    if (host->kind == END_OF_LINE) host->value_type = side.type;  // the head of a user function's body
}

bool specialise(Token* start, Domain wanted, Specialised& result) {
    pool.count = 0;
    pool.allocates = false;
    result.end = start;
    const std::int16_t root = parse_from(result.end, 1);
    if (root == none) return false;
    const Domain natural = domain_of(node_at(root).type);
    if (natural == Domain::TEXT && wanted != Domain::TEXT) return false;
    if (!emit(root, wanted, result.side)) return false;
    result.allocates = pool.allocates;
    return true;
}

bool specialise_element(Token* name, Specialised& result) {
    pool.count = 0;
    pool.allocates = false;
    if (!bind_element(name, result.end, result.side.type)) return false;
    result.allocates = pool.allocates;
    return true;
}

bool set_chained_step(Token* at, Domain domain) {
    switch (domain) {
        case Domain::REAL:
            return set_chained_real_step(at);
        case Domain::SINGLE:
            return set_chained_single_step(at);
        case Domain::WHOLE:
            return set_chained_whole_step(at);
        default:
            return false;
    }
}

bool set_computed_step(Token* at, Domain domain) {
    switch (domain) {
        case Domain::REAL:
            return set_computed_real_step(at);
        case Domain::SINGLE:
            return set_computed_single_step(at);
        case Domain::WHOLE:
            return set_computed_whole_step(at);
        default:
            return false;
    }
}

void set_sign_step(Token* at, Domain domain) {
    switch (domain) {
        case Domain::REAL:
            set_real_sign_step(at);
            break;
        case Domain::SINGLE:
            set_single_sign_step(at);
            break;
        default:
            set_whole_sign_step(at);
            break;
    }
}

}  // namespace korvane::fast
