// Emission: steps for the nodes of an expression, operands before operators.
#include "fast/expression.h"

#include <algorithm>

#include "fast/comparison_steps.h"
#include "fast/element_steps.h"
#include "fast/function_steps.h"
#include "fast/nodes.h"
#include "fast/number_types.h"
#include "fast/operator_steps.h"
#include "fast/sides.h"
#include "fast/text_comparisons.h"
#include "fast/text_steps.h"

namespace korvane::fast {
namespace {

// A number literal keeps copies of itself in the forms in which it may be wanted.
void emit_number(Token* literal, Type type, Domain wanted, Side& side) {
    auto& number = literal->number;
    if (wanted == Domain::WHOLE && is_integer(type)) {
        side.kind = side_kind(I64, false, Domain::WHOLE);
        side.leaf = &number.integer;
        return;
    }
    const auto narrow = static_cast<float>(number.as_double);
    if (wanted == Domain::SINGLE && static_cast<double>(narrow) == number.as_double) {
        number.as_single = narrow;
        side.kind = F32;
        side.leaf = &number.as_single;
        return;
    }
    side.kind = F64;
    side.leaf = &number.as_double;
}

void emit_leaf(const Node& node, Domain wanted, Side& side) {
    side = {.kind = 0, .leaf = node.operand, .chain = nullptr, .last = nullptr, .type = node.type};
    if (node.form == Form::VARIABLE) {
        const bool whole = wanted == Domain::WHOLE && is_integer(node.type);
        side.kind = side_kind(leaf_of(node.type), false, whole ? Domain::WHOLE : Domain::REAL);
    } else if (node.type == Type::STRING) {
        side.kind = TEXT_LITERAL;
        side.leaf = node.token;
    } else {
        emit_number(node.token, node.type, wanted, side);
    }
}

Side chain_of(Token* step, Domain domain, Type type) {
    as<StepRecord>(step).next = nullptr;
    return {.kind = side_kind(COMPUTED, true, domain),
            .leaf = &no_leaf,
            .chain = step,
            .last = step,
            .type = type};
}

// Whether an accumulator of the domain can start from the side, and go on from its last step.
bool carries(const Side& side, Domain domain) {
    const auto leaf = static_cast<Leaf>(side.kind & leaf_mask);
    const Domain side_domain = domain_of_kind(side.kind);
    if ((side.kind & has_chain) != 0) return side_domain == domain;
    switch (domain) {
        case Domain::REAL:
            return leaf <= I64;
        // A float holds these exactly; a LONG or INT64 it may not.
        case Domain::SINGLE:
            return leaf == F32 || leaf == I16;
        case Domain::WHOLE:
            return side_domain == Domain::WHOLE;
        default:
            return false;
    }
}

// Appends the operator, whose right side is set, to the left operand's chain.
Side append(Side left, Token* operation, Domain domain, Type type) {
    as<StepRecord>(operation).next = nullptr;
    if (left.last != nullptr) {
        as<StepRecord>(left.last).next = operation;
    } else {
        left.kind = side_kind(static_cast<Leaf>(left.kind & leaf_mask), true, domain);
        left.chain = operation;
    }
    left.last = operation;
    left.type = type;
    return left;
}

void hold_left(Token* operation, const Side& left) {
    auto& record = as<OperatorRecord>(operation);
    record.left_kind = left.kind;
    record.left_leaf = left.leaf;
    record.left_chain = left.chain;
}

bool emit_binary(const Node& node, Domain wanted, Side& side) {
    Domain domain = domain_of(node.type);
    if (domain == Domain::WHOLE && wanted != Domain::WHOLE && node.exact) domain = Domain::REAL;
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

// The domain in which a relation's operands are compared; TEXT for two strings.
bool comparison_domain(const Node& a, const Node& b, Domain& domain) {
    if (a.type == Type::STRING) {
        domain = Domain::TEXT;
        return true;
    }
    const Type wider = std::max(a.type, b.type);
    domain = is_integer(wider) ? Domain::WHOLE : domain_of(wider);
    return domain == Domain::WHOLE || (comparable_as_reals(a) && comparable_as_reals(b));
}

bool emit_operands(const Node& node, Domain domain) {
    Side left;
    Side right;
    if (!emit(node.left, domain, left) || !emit(node.right, domain, right)) return false;
    hold_left(node.token, left);
    hold(node.token, right);
    return true;
}

// Whether the node's side is plain when it is wanted as a float: of the type itself, and no chain that begins
// with an INTEGER.
bool is_plain_single(const Node& operand) {
    const Node* first = &operand;
    while (first->form == Form::BINARY && first->type == Type::SINGLE) {
        const Node& left = node_at(first->left);
        if (left.form == Form::VARIABLE && left.type == Type::INTEGER) return false;
        if (left.form != Form::BINARY) return true;
        first = &left;
    }
    if (first != &operand) return true;
    if (operand.form != Form::LITERAL) return operand.type == Type::SINGLE;
    const double number = operand.token->number.as_double;
    return static_cast<double>(static_cast<float>(number)) == number;
}

bool emit_relation(const Node& node, Side& side) {
    const Node& left = node_at(node.left);
    const Node& right = node_at(node.right);
    Domain domain;
    if (!comparison_domain(left, right, domain)) return false;
    if (domain == Domain::SINGLE && !(is_plain_single(left) && is_plain_single(right))) domain = Domain::REAL;
    if (!emit_operands(node, domain)) return false;
    Token* relation = node.token;
    if (domain == Domain::TEXT) {
        set_text_comparison_step(relation);
    } else if (node.keeps_order) {
        return false;
    } else {
        set_comparison_step(relation, domain);
    }
    side = chain_of(relation, Domain::WHOLE, node.type);
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

}  // namespace

bool emit(std::int16_t index, Domain wanted, Side& side) {
    if (stack_exhausted()) return false;
    const Node& node = node_at(index);
    Domain domain = domain_of(node.type);
    switch (node.form) {
        case Form::VARIABLE:
        case Form::LITERAL:
            emit_leaf(node, wanted, side);
            return true;
        case Form::BINARY:
            return emit_binary(node, wanted, side);
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
        case Form::TEXT_CALL:  // has its step
            break;
        case Form::USER:
            set_user_function_step(node.token, node.function, domain);
            break;
    }
    side = chain_of(node.token, domain, node.type);
    return true;
}

Domain domain_of(Type type) {
    if (type == Type::STRING) return Domain::TEXT;
    if (type == Type::DOUBLE) return Domain::REAL;
    return type == Type::SINGLE ? Domain::SINGLE : Domain::WHOLE;
}

void hold(Token* host, const Side& side) {
    auto& record = as<HolderRecord>(host);
    record.value_kind = side.kind;
    record.value_leaf = side.leaf;
    record.value_chain = side.chain;
    if (host->kind == END_OF_LINE) host->value_type = side.type;  // the head of a user function's body
}

bool specialise(Token* start, Domain wanted, Specialised& result) {
    pool.progress = {};
    result.end = start;
    const std::int16_t root = parse_expression(result.end, 1);
    if (root == none) return false;
    const Domain natural = domain_of(node_at(root).type);
    if (natural == Domain::TEXT && wanted != Domain::TEXT) return false;
    if (!emit(root, wanted, result.side)) return false;
    result.form = node_at(root).form;
    result.operation = node_at(root).token;
    result.allocates = pool.progress.allocates;
    return true;
}

bool specialise_element(Token* name, Specialised& result) {
    pool.progress = {};
    if (!bind_element(name, result.end, result.side.type)) return false;
    result.allocates = pool.progress.allocates;
    return true;
}

}  // namespace korvane::fast
