// The condition that an IF or WHILE holds as its right side. The statements' handlers are made for the
// frequent forms, each of which is a type with a function `of` here.
#pragma once

#include "fast/choose.h"
#include "fast/comparison_steps.h"
#include "fast/expression.h"
#include "fast/sides.h"

namespace korvane::fast {

enum class Truth : std::uint8_t { FALSE, TRUE, FAILED };

inline Truth truth_of(const Whole& value) {
    if (__builtin_expect(value.failed != 0, false)) return Truth::FAILED;
    return value.value != 0 ? Truth::TRUE : Truth::FALSE;
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

// A comparison of two variables or literals and nothing behind it. The statement keeps them itself, a literal
// with its value, so that a long program need not fetch the records of the comparison as well.
template <int relation, typename Number>
struct LeafComparison {
    static Truth of(const Token* at) {
        const auto& condition = as<ConditionRecord>(at);
        const auto left = read<Number>(condition.left_leaf);
        const auto right = read<Number>(condition.right_leaf);
        if (__builtin_isunordered(left, right)) return Truth::FAILED;
        return holds<relation>(left, right) ? Truth::TRUE : Truth::FALSE;
    }
};

// Keeps the two leaves of a comparison.
void keep_leaves(ConditionRecord& condition, const OperatorRecord& comparison, std::size_t size_of_number);

// Whether the condition is such a comparison: of two DOUBLE leaves, or of two SINGLE ones.
inline bool compares_leaves(const Specialised& condition) {
    if (condition.form != Form::RELATION) return false;
    const auto& comparison = as<OperatorRecord>(condition.operation);
    return comparison.left_kind == comparison.right_kind &&
           (comparison.left_kind == F64 || comparison.left_kind == F32);
}

// The handler of a statement for the condition that it holds: what `make` gives for the condition's type, of
// which it takes an object.
template <typename Make>
Execute handler_for(Token* at, const Specialised& condition, Make make) {
    if (condition.side.kind != side_kind(COMPUTED, true, Domain::WHOLE)) return make(AnyCondition{});
    if (!compares_leaves(condition)) return make(ComputedCondition{});
    const auto& comparison = as<OperatorRecord>(condition.operation);
    const bool single = comparison.left_kind == F32;
    keep_leaves(as<ConditionRecord>(at), comparison, single ? sizeof(float) : sizeof(double));
    return choose<LESS, EQUAL, LESS | EQUAL, LESS | GREATER>(
        lesser_first(condition.operation), [=](auto listed) {
            return single ? make(LeafComparison<listed(), float>{})
                          : make(LeafComparison<listed(), double>{});
        });
}

}  // namespace korvane::fast
