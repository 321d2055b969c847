// Steps of the relational operators. They compare in the domain of their operands and begin a chain of the
// whole domain with -1 or 0.
#include "fast/sides.h"
#include "fast/text_comparisons.h"
#include "fast/whole_steps.h"

namespace korvane::fast {
namespace {

// A relation is the set of outcomes for which it is true.
enum Outcome : int { LESS = 1, EQUAL = 2, GREATER = 4 };

template <int relation, typename Number>
inline bool holds(Number left, Number right) {
    if constexpr (relation == LESS) return left < right;
    if constexpr (relation == EQUAL) return left == right;
    if constexpr (relation == GREATER) return left > right;
    if constexpr (relation == (LESS | EQUAL)) return left <= right;
    if constexpr (relation == (GREATER | EQUAL)) return left >= right;
    return left != right;
}

inline Whole truth(bool is_true, Token* at) {
    return go_on_whole(is_true ? -1 : 0, at);
}

// What is no number fails: the general evaluator says whether it is an error.
template <int relation>
Whole compare_reals(std::int64_t, Token* at) {
    const double left = left_real(at);
    const double right = right_real(at);
    if (!is_finite(left) || !is_finite(right)) return {0, 1};
    return truth(holds<relation>(left, right), at);
}

template <int relation>
Whole compare_real_leaves(std::int64_t, Token* at) {
    const double left = read<double>(at->step.left_operand);
    const double right = read<double>(at->step.operand);
    if (__builtin_isunordered(left, right)) return {0, 1};
    return truth(holds<relation>(left, right), at);
}

template <int relation>
Whole compare_wholes(std::int64_t, Token* at) {
    const Whole left = left_whole(at);
    if (left.failed != 0) return left;
    const Whole right = right_whole(at);
    if (right.failed != 0) return right;
    return truth(holds<relation>(left.value, right.value), at);
}

template <int relation, Leaf left, Leaf right>
Whole compare_whole_leaves(std::int64_t, Token* at) {
    return truth(
        holds<relation>(whole_leaf<left>(at->step.left_operand), whole_leaf<right>(at->step.operand)), at);
}

using WholeStep = Whole (*)(std::int64_t, Token*);

// The frequent pairs: variables of one type, and a variable with a literal.
template <int relation, Leaf left>
WholeStep whole_leaves(std::uint8_t right_kind) {
    if (right_kind == side_kind(left, false, Domain::WHOLE))
        return compare_whole_leaves<relation, left, left>;
    if (right_kind == side_kind(I64, false, Domain::WHOLE)) return compare_whole_leaves<relation, left, I64>;
    return compare_wholes<relation>;
}

template <int relation>
WholeStep choose(const Token* at, Domain domain) {
    if (domain != Domain::WHOLE) {
        return at->left_kind == F64 && at->right_kind == F64 ? compare_real_leaves<relation>
                                                             : compare_reals<relation>;
    }
    switch (at->left_kind) {
        case side_kind(I16, false, Domain::WHOLE):
            return whole_leaves<relation, I16>(at->right_kind);
        case side_kind(I32, false, Domain::WHOLE):
            return whole_leaves<relation, I32>(at->right_kind);
        case side_kind(I64, false, Domain::WHOLE):
            return whole_leaves<relation, I64>(at->right_kind);
        default:
            return compare_wholes<relation>;
    }
}

int relation_at(const Token* at) {
    if (at->kind == '=') return EQUAL;
    if (at->kind == '>') return at[1].kind == '=' ? GREATER | EQUAL : GREATER;
    if (at[1].kind == '=') return LESS | EQUAL;
    return at[1].kind == '>' ? LESS | GREATER : LESS;
}

}  // namespace

void set_comparison_step(Token* at, Domain domain) {
    if (domain == Domain::TEXT) {
        set_text_comparison_step(at);
        return;
    }
    switch (relation_at(at)) {
        case LESS:
            at->step.whole = choose<LESS>(at, domain);
            break;
        case EQUAL:
            at->step.whole = choose<EQUAL>(at, domain);
            break;
        case GREATER:
            at->step.whole = choose<GREATER>(at, domain);
            break;
        case LESS | EQUAL:
            at->step.whole = choose<LESS | EQUAL>(at, domain);
            break;
        case GREATER | EQUAL:
            at->step.whole = choose<GREATER | EQUAL>(at, domain);
            break;
        default:
            at->step.whole = choose<LESS | GREATER>(at, domain);
            break;
    }
}

}  // namespace korvane::fast
