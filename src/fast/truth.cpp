#include "fast/truth.h"

#include "fast/links.h"
#include "platform/memory.h"
#include "program/execution.h"

namespace korvane::fast {
namespace {

// Variables lie outside the current line's records.
bool is_literal(const void* leaf) {
    const void* first = execution.tokens;
    const void* end = end_of_line(execution.tokens);
    return leaf >= first && leaf < end;
}

}  // namespace

void keep_leaves(ConditionRecord& condition, const OperatorRecord& comparison, std::size_t size_of_number) {
    condition.left_leaf = comparison.left_leaf;
    condition.right_leaf = comparison.right_leaf;
    const void*& kept = is_literal(condition.right_leaf) ? condition.right_leaf : condition.left_leaf;
    if (!is_literal(kept)) return;
    copy_bytes(condition.literal, kept, size_of_number);
    kept = condition.literal;
}

Truth AnyCondition::of(const Token* at) {
    if (domain_of_kind(as<ConditionRecord>(at).condition_kind) == Domain::WHOLE)
        return truth_of(right_whole(at));
    const double value = right_real(at);
    if (!is_finite(value)) return Truth::FAILED;
    return value != 0 ? Truth::TRUE : Truth::FALSE;
}

}  // namespace korvane::fast
