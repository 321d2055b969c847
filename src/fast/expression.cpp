// Emission: steps for the nodes of an expression, operands before operators.
#include "fast/expression.h"

#include "fast/comparison_steps.h"
#include "fast/element_steps.h"
#include "fast/function_steps.h"
#include "fast/nodes.h"
#include "fast/operator_steps.h"
#include "fast/records.h"
#include "fast/text_comparisons.h"
#include "fast/text_steps.h"

namespace korvane::fast {
namespace {

// Where the literal keeps the copy of itself that has been planned.
const void* emit_literal(Token* literal, std::uint8_t kind) {
    auto& number = literal->number;
    switch (kind & leaf_mask) {
        case TEXT_LITERAL:
            return literal;
        case I64:
            return &number.integer;
        case F32:
            number.as_single = static_cast<float>(number.as_double);
            return &number.as_single;
        default:
            return &number.as_double;
    }
}

// A chain of one step that begins with a value of its own.
Side chain_of(const Node& node) {
    as<StepRecord>(node.token).next = nullptr;
    return {.kind = node.kind, .leaf = &no_leaf, .chain = node.token, .last = node.token};
}

// Appends the operator, whose right side is set, to the left operand's chain.
Side append(Side left, const Node& node) {
    as<StepRecord>(node.token).next = nullptr;
    if (left.last != nullptr)
        as<StepRecord>(left.last).next = node.token;
    else
        left.chain = node.token;
    left.last = node.token;
    left.kind = node.kind;
    return left;
}

void hold_left(Token* operation, const Side& left) {
    auto& record = as<OperatorRecord>(operation);
    record.left_kind = left.kind;
    record.left_leaf = left.leaf;
    record.left_chain = left.chain;
}

Side emit_binary(const Node& node) {
    const Side left = emit(node.left);
    hold(node.token, emit(node.right));
    if (is_carried(node)) {
        set_chained_step(node.token, node.domain);
        return append(left, node);
    }
    hold_left(node.token, left);
    if (node.domain == Domain::text)
        set_concatenation_step(node.token);
    else
        set_computed_step(node.token, node.domain);
    return chain_of(node);
}

void emit_relation(const Node& node) {
    hold_left(node.token, emit(node.left));
    hold(node.token, emit(node.right));
    if (node.domain == Domain::text)
        set_text_comparison_step(node.token);
    else
        set_comparison_step(node.token, node.domain, node.with_care);
}

Type last_argument_type(const Node& node) {
    std::int16_t last = node.first_argument;
    while (node_at(last).next_argument != none)
        last = node_at(last).next_argument;
    return node_at(node_at(last).value).type;
}

// Makes the marks of a call or an element hold its arguments.
void emit_arguments(const Node& node) {
    for (std::int16_t i = node.first_argument; i != none;) {
        const Node& argument = node_at(i);
        hold(argument.token, emit(argument.value));
        i = argument.next_argument;
        as<MarkRecord>(argument.token).next_mark = i == none ? nullptr : node_at(i).token;
    }
}

void emit_call(const Node& node) {
    if (node.form == Form::element) {
        bind_element(node);
        set_element_step(node.token, node.type, node.domain);
        return;
    }
    emit_arguments(node);
    switch (node.form) {
        case Form::call:
            set_function_step(node.token, *node.built_in, last_argument_type(node), node.domain);
            break;
        case Form::text_call:
            set_text_function_step(node.token, *node.built_in, last_argument_type(node));
            break;
        default:
            set_user_function_step(node.token, node.function, node.domain);
            break;
    }
}

}  // namespace

Side emit(std::int16_t index) {
    const Node& node = node_at(index);
    switch (node.form) {
        case Form::variable:
        case Form::bare_call:
        case Form::bare_user_call:
            return {.kind = node.kind, .leaf = node.storage, .chain = nullptr, .last = nullptr};
        case Form::literal:
            return {.kind = node.kind,
                    .leaf = emit_literal(node.token, node.kind),
                    .chain = nullptr,
                    .last = nullptr};
        case Form::binary:
            return emit_binary(node);
        case Form::relation:
            emit_relation(node);
            break;
        case Form::sign:
            hold(node.token, emit(node.right));
            set_sign_step(node.token, node.domain);
            break;
        case Form::complement:
            hold(node.token, emit(node.right));
            set_not_step(node.token);
            break;
        default:
            emit_call(node);
            break;
    }
    return chain_of(node);
}

void hold(Token* host, const Side& side) {
    auto& record = as<HolderRecord>(host);
    record.value_kind = side.kind;
    record.value_leaf = side.leaf;
    record.value_chain = side.chain;
}

void begin_statement() {
    pool.progress = {};
}

bool read_expression(Token* start, Domain wanted, Expression& result) {
    result.end = start;
    result.root = parse_expression(result.end, 1);
    if (result.root == none) return false;
    if (result.node().type == Type::STRING && wanted != Domain::text) return false;
    return plan(result.root, wanted);
}

Subscripts subscripts_of(const Node& element) {
    const Node& first = node_at(element.first_argument);
    if (node_at(first.value).kind != F64) return Subscripts::any;
    if (first.next_argument == none) return Subscripts::one;
    const Node& second = node_at(first.next_argument);
    const bool last = second.next_argument == none;
    return last && node_at(second.value).kind == F64 ? Subscripts::two : Subscripts::any;
}

void bind_element(const Node& element) {
    emit_arguments(element);
    auto& record = as<ElementRecord>(element.token);
    record.array = element.array;
    record.subscripts = subscripts_of(element);
}

bool read_element(Token* name, Expression& result) {
    result.end = name;
    result.root = parse_element(result.end);
    return result.root != none && plan_arguments(result.node());
}

void hold(Token* host, const Expression& expression) {
    hold(host, emit(expression.root));
}

}  // namespace korvane::fast
