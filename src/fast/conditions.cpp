#include "fast/conditions.h"

namespace korvane::fast {

Truth AnyCondition::of(const Token* at) {
    if (domain_of_kind(at->right_kind) == Domain::WHOLE) return truth_of(right_whole(at));
    const double value = right_real(at);
    if (!is_finite(value)) return Truth::FAILED;
    return value != 0 ? Truth::TRUE : Truth::FALSE;
}

}  // namespace korvane::fast
