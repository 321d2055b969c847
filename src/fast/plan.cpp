// Planning: operands before operators, like the steps that are made of them afterwards (fast/expression.cpp).
#include <algorithm>

#include "fast/expression.h"
#include "fast/nodes.h"
#include "fast/number_types.h"

namespace korvane::fast {
namespace {

// A number literal keeps copies of itself in the forms in which it may be wanted.
std::uint8_t kind_of_number(const Node& literal, Domain wanted) {
    if (wanted == Domain::whole && is_integer(literal.type)) return side_kind(I64, false, Domain::whole);
    const double number = literal.token->number.as_double;
    const bool narrow = static_cast<double>(static_cast<float>(number)) == number;
    return wanted == Domain::single && narrow ? F32 : F64;
}

std::uint8_t kind_of_leaf(const Node& node, Domain wanted) {
    if (node.form != Form::literal) {
        const bool whole = wanted == Domain::whole && is_integer(node.type);
        const Leaf leaf = node.form == Form::variable    ? leaf_of(node.type)
                          : node.form == Form::bare_call ? FUNCTION
                                                         : USER_FUNCTION;
        return side_kind(leaf, false, whole ? Domain::whole : Domain::real);
    }
    return node.type == Type::STRING ? std::uint8_t{TEXT_LITERAL} : kind_of_number(node, wanted);
}

// Whether an accumulator of the domain can start from a side of the kind, and go on from its last step.
bool carries(std::uint8_t kind, Domain domain) {
    const auto leaf = static_cast<Leaf>(kind & leaf_mask);
    if ((kind & has_chain) != 0) return domain_of_kind(kind) == domain && domain != Domain::text;
    switch (domain) {
        case Domain::real:
            return leaf <= I64;
        // A float holds these exactly; a LONG or INT64 it may not.
        case Domain::single:
            return leaf == F32 || leaf == I16;
        case Domain::whole:
            return domain_of_kind(kind) == Domain::whole && leaf <= I64;
        default:
            return false;
    }
}

bool plan_binary(Node& node, Domain wanted) {
    node.domain = domain_of(node.type);
    if (node.domain == Domain::whole && wanted != Domain::whole && node.exact) node.domain = Domain::real;
    if (!plan(node.left, node.domain) || !plan(node.right, node.domain)) return false;
    const auto leaf = static_cast<Leaf>(node_at(node.left).kind & leaf_mask);
    node.kind = is_carried(node) ? side_kind(leaf, true, node.domain) : computed_kind(node.domain);
    return true;
}

// Whether a double certainly is what the node's value is.
bool is_exact_as_real(const Node& node) {
    return !is_integer(node.type) || node.bound <= exact_integers;
}

// Whether the node's side is plain when it is wanted as a float: of the type itself, and no chain that begins
// with an INTEGER.
bool is_plain_single(const Node& operand) {
    const Node* first = &operand;
    while (first->form == Form::binary && first->type == Type::SINGLE) {
        const Node& left = node_at(first->left);
        if (left.form == Form::variable && left.type == Type::INTEGER) return false;
        if (left.form != Form::binary) return true;
        first = &left;
    }
    if (first != &operand) return true;
    if (operand.form == Form::bare_call || operand.form == Form::bare_user_call) return false;
    return operand.form == Form::literal ? kind_of_number(operand, Domain::single) == F32
                                         : operand.type == Type::SINGLE;
}

// The domain in which two numbers are compared: integers and floats as doubles.
Domain comparison_domain(const Node& a, const Node& b) {
    const Type wider = std::max(a.type, b.type);
    if (is_integer(wider)) return Domain::whole;
    return wider == Type::SINGLE && is_plain_single(a) && is_plain_single(b) ? Domain::single : Domain::real;
}

void plan_comparison(Node& node, const Node& left, const Node& right) {
    node.domain = comparison_domain(left, right);
    // The sides of ">" may change places, and what one takes the other may see: FRE, say, or PEEK.
    const bool in_order = node.token->kind == '>' && (left.takes() || right.takes());
    if (in_order && node.domain == Domain::single) node.domain = Domain::real;
    const bool exact = node.domain != Domain::real || (is_exact_as_real(left) && is_exact_as_real(right));
    node.with_care = in_order || !exact;
}

// The domain of a relation's node is the one in which its operands are compared; its value is an integer.
bool plan_relation(Node& node) {
    const Node& left = node_at(node.left);
    if (left.type == Type::STRING)
        node.domain = Domain::text;
    else
        plan_comparison(node, left, node_at(node.right));
    node.kind = computed_kind(Domain::whole);
    return plan(node.left, node.domain) && plan(node.right, node.domain);
}

bool plan_sign(Node& node, Domain domain) {
    node.domain = domain;
    node.kind = computed_kind(domain);
    return plan(node.right, domain);
}

bool plan_call(Node& node, Domain wanted) {
    node.domain = domain_of(node.type);
    // A numeric element can be taken as a double at once.
    if (node.form == Form::element && wanted == Domain::real && is_numeric(node.type) &&
        is_exact_as_real(node))
        node.domain = wanted;
    node.kind = computed_kind(node.domain);
    return plan_arguments(node);
}

}  // namespace

bool is_carried(const Node& node) {
    return carries(node_at(node.left).kind, node.domain);
}

bool plan_arguments(const Node& node) {
    for (std::int16_t i = node.first_argument; i != none; i = node_at(i).next_argument) {
        const std::int16_t value = node_at(i).value;
        if (!plan(value, domain_of(node_at(value).type))) return false;
    }
    return true;
}

// The steps are made by a descent as deep as this one.
bool plan(std::int16_t index, Domain wanted) {
    if (stack_exhausted()) return false;
    Node& node = node_at(index);
    switch (node.form) {
        case Form::variable:
        case Form::literal:
        case Form::bare_call:
        case Form::bare_user_call:
            node.kind = kind_of_leaf(node, wanted);
            return true;
        case Form::binary:
            return plan_binary(node, wanted);
        case Form::relation:
            return plan_relation(node);
        case Form::sign:
            return plan_sign(node, domain_of(node.type));
        case Form::complement:
            return plan_sign(node, Domain::whole);
        default:
            return plan_call(node, wanted);
    }
}

}  // namespace korvane::fast
