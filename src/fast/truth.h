// The condition that an IF or WHILE holds as its right side. The statements' handlers are made for the
// frequent forms, each of which is a type with a function `of` here.
#pragma once

#include "fast/choose.h"
#include "fast/comparison_steps.h"
#include "fast/expression.h"
#include "fast/sides.h"

namespace korvane::fast {

enum class Truth : std::uint8_t { is_false, is_true, failed };

inline Truth truth_of(const Whole& value) {
    if (__builtin_expect(value.failed != 0, false)) return Truth::failed;
    return value.value != 0 ? Truth::is_true : Truth::is_false;
}

// Any condition.
struct AnyCondition {
    static Truth of(const Token* at);
};

// A chain of the whole domain without a leaf in front, such as begins with a comparison.
struct ComputedCondition {
    static Truth of(const Token* at) {
        return truth_of(call_chain(std::int64_t{0}, as<ConditionRecord>(at).chain));
    }
};

// A comparison of two DOUBLE variables or literals and nothing behind it. The statement keeps them itself, a
// literal with its value, so that a long program need not fetch the records of the comparison as well.
template <int relation>
struct LeafComparison {
    static Truth of(const Token* at) {
        const auto& condition = as<ConditionRecord>(at);
        const auto left = read<double>(condition.left_leaf);
        const auto right = read<double>(condition.right_leaf);
        if (__builtin_isunordered(left, right)) return Truth::failed;
        return holds<relation>(left, right) ? Truth::is_true : Truth::is_false;
    }
};

// Whether the condition is such a comparison: of two DOUBLE leaves. Those of other types are too rare.
bool compares_leaves(const Node& condition);

// Makes a statement hold the leaves of such a comparison.
void keep_leaves(ConditionRecord& condition, const Node& comparison);

// Makes the statement hold the condition. Gives its handler: what `make` gives for the condition's type, of
// which it takes an object.
template <typename Make>
Execute hold_condition(Token* at, const Expression& condition, Make make) {
    const Node& node = condition.node();
    if (compares_leaves(node)) {
        keep_leaves(as<ConditionRecord>(at), node);
        return choose<LESS, EQUAL, LESS | EQUAL, LESS | GREATER>(
            lesser_first(node.token), [=](auto listed) { return make(LeafComparison<listed()>{}); });
    }
    hold(at, condition);
    const bool is_computed = node.kind == computed_kind(Domain::whole);
    return is_computed ? make(ComputedCondition{}) : make(AnyCondition{});
}

}  // namespace korvane::fast
