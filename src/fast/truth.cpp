#include "fast/truth.h"

#include <utility>

#include "platform/memory.h"

namespace korvane::fast {
namespace {

const void* keep_leaf(ConditionRecord& condition, const Node& leaf) {
    if (leaf.form == Form::variable) return leaf.storage;
    const double number = leaf.token->number.as_double;
    if (leaf.kind == F32)
        write_unaligned(condition.literal, static_cast<float>(number));
    else
        write_unaligned(condition.literal, number);
    return condition.literal;
}

}  // namespace

bool compares_leaves(const Node& condition) {
    if (condition.form != Form::relation || condition.with_care) return false;
    const Node& left = node_at(condition.left);
    const Node& right = node_at(condition.right);
    const bool two_literals = left.form == Form::literal && right.form == Form::literal;
    return left.kind == right.kind && (left.kind == F64 || left.kind == F32) && !two_literals;
}

void keep_leaves(ConditionRecord& condition, const Node& comparison) {
    const Node* left = &node_at(comparison.left);
    const Node* right = &node_at(comparison.right);
    if (comparison.token->kind == '>') std::swap(left, right);
    condition.condition_kind = comparison.kind;
    condition.left_leaf = keep_leaf(condition, *left);
    condition.right_leaf = keep_leaf(condition, *right);
}

Truth AnyCondition::of(const Token* at) {
    if (domain_of_kind(as<ConditionRecord>(at).condition_kind) == Domain::whole)
        return truth_of(right_whole(at));
    const double value = right_real(at);
    if (!is_finite(value)) return Truth::failed;
    return value != 0 ? Truth::is_true : Truth::is_false;
}

}  // namespace korvane::fast
