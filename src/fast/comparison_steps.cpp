#include "fast/comparison_steps.h"

#include <utility>

#include "fast/choose.h"
#include "fast/sides.h"

namespace korvane::fast {
namespace {

inline Whole truth(bool is_true, Token* at) {
    return go_on_whole(is_true ? -1 : 0, at);
}

// What is no number fails, and so does a computed value that is infinite: the general evaluator says whether
// it is an error.
template <int relation>
Whole compare_reals(std::int64_t, Token* at) {
    const double left = left_real(at);
    const double right = right_real(at);
    if (!is_finite(left) || !is_finite(right)) return {0, 1};
    return truth(holds<relation>(left, right), at);
}

template <int relation, typename Number>
Whole compare_plain(std::int64_t, Token* at) {
    const auto left = plain_left<Number>(at);
    if (at->step.left_inner != nullptr && !is_finite(left)) return {0, 1};
    const auto right = plain_right<Number>(at);
    if (at->step.inner != nullptr && !is_finite(right)) return {0, 1};
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

// The frequent pairs of leaves have steps of their own: variables of one type, and a variable with a literal.
template <int relation>
WholeStep choose_for_wholes(const Token* at) {
    const std::uint8_t left_kind = at->left_kind;
    const std::uint8_t right_kind = at->right_kind;
    const WholeStep step =
        choose<I16, I32, I64>(static_cast<Leaf>(left_kind & leaf_mask), [=](auto left) -> WholeStep {
            if (left_kind != side_kind(left(), false, Domain::WHOLE)) return nullptr;
            if (right_kind == left_kind) return compare_whole_leaves<relation, left(), left()>;
            const bool literal = right_kind == side_kind(I64, false, Domain::WHOLE);
            return literal ? compare_whole_leaves<relation, left(), I64> : nullptr;
        });
    return step != nullptr ? step : compare_wholes<relation>;
}

template <int relation>
WholeStep choose_for(const Token* at, Domain domain) {
    if (domain == Domain::WHOLE) return choose_for_wholes<relation>(at);
    if (domain == Domain::SINGLE) return compare_plain<relation, float>;
    const bool plain = is_plain<double>(at->left_kind) && is_plain<double>(at->right_kind);
    return plain ? compare_plain<relation, double> : compare_reals<relation>;
}

// Exchanges the sides of an operator that asks whether the left one is greater, so that numbers need only be
// looked at the other way round; gives the relation to ask for now.
int put_lesser_first(Token* at) {
    if (at->kind == '>') {
        std::swap(at->left_kind, at->right_kind);
        std::swap(at->step.left_operand, at->step.operand);
        std::swap(at->step.left_inner, at->step.inner);
    }
    return lesser_first(at);
}

}  // namespace

int lesser_first(const Token* at) {
    const int relation = read_relation(at);
    if (relation == GREATER) return LESS;
    return relation == (GREATER | EQUAL) ? LESS | EQUAL : relation;
}

[[gnu::cold]] void set_comparison_step(Token* at, Domain domain) {
    const int relation = put_lesser_first(at);
    at->step.whole = choose<LESS, EQUAL, LESS | EQUAL, LESS | GREATER>(
        relation, [=](auto listed) { return choose_for<listed()>(at, domain); });
}

}  // namespace korvane::fast
