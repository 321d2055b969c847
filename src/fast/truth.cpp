#include "fast/truth.h"

#include "fast/links.h"
#include "platform/memory.h"
#include "program/execution.h"

namespace korvane::fast {
namespace {

// Variables lie outside the current line's records.
bool is_literal(const void* operand) {
    const void* first = execution.tokens;
    const void* end = end_of_line(execution.tokens);
    return operand >= first && operand < end;
}

}  // namespace

void keep_leaves(Token* at, const Token* comparison, std::size_t size_of_number) {
    at->step.left_operand = comparison->step.left_operand;
    at->step.operand = comparison->step.operand;
    const void*& kept = is_literal(at->step.operand) ? at->step.operand : at->step.left_operand;
    if (!is_literal(kept)) return;
    copy_bytes(at->step.literal, kept, size_of_number);
    kept = at->step.literal;
}

Truth AnyCondition::of(const Token* at) {
    if (domain_of_kind(at->right_kind) == Domain::WHOLE) return truth_of(right_whole(at));
    const double value = right_real(at);
    if (!is_finite(value)) return Truth::FAILED;
    return value != 0 ? Truth::TRUE : Truth::FALSE;
}

}  // namespace korvane::fast
