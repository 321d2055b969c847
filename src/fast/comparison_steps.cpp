#include "fast/comparison_steps.h"

#include <utility>

#include "fast/choose.h"
#include "fast/sides.h"

namespace korvane::fast {
namespace {

inline std::int64_t truth(bool is_true) {
    return is_true ? -1 : 0;
}

// What is no number fails, and so does a computed value that is infinite: the general evaluator says whether
// it is an error.
template <int relation>
WholeResult compare_reals(std::int64_t, Token* at) {
    const double left = left_real(at);
    const double right = right_real(at);
    if (!is_finite(left) || !is_finite(right)) return no_whole;
    KORVANE_JUMP return go_on_whole(truth(holds<relation>(left, right)), at);
}

// Doubles that are exact beyond doubt.
inline bool are_exact(double left, double right) {
    return __builtin_fabs(left) <= exact_integers && __builtin_fabs(right) <= exact_integers;
}

// Where care is needed the sides do not change places, and the operator is read again.
template <typename Number>
std::int64_t truth_in_order(Number left, Number right, const Token* operation) {
    const std::uint8_t outcome = left < right ? LESS : left > right ? GREATER : EQUAL;
    return truth((read_relation(operation) & outcome) != 0);
}

// A number that fails may be an integer that no double holds: the general evaluator compares it exactly.
WholeResult compare_reals_with_care(std::int64_t, Token* at) {
    const double left = left_real(at);
    const double right = quick_right_real(at);
    if (!are_exact(left, right)) return no_whole;
    KORVANE_JUMP return go_on_whole(truth_in_order(left, right, at), at);
}

WholeResult compare_wholes_with_care(std::int64_t, Token* at) {
    const Whole left = left_whole(at);
    if (left.failed != 0) return left;
    const Whole right = right_whole(at);
    if (right.failed != 0) return right;
    KORVANE_JUMP return go_on_whole(truth_in_order(left.value, right.value, at), at);
}

template <int relation, typename Number>
WholeResult compare_plain(std::int64_t, Token* at) {
    const auto left = plain_left<Number>(at);
    if (as<OperatorRecord>(at).left_chain != nullptr && !is_finite(left)) return no_whole;
    const auto right = plain_right<Number>(at);
    if (as<OperatorRecord>(at).right_chain != nullptr && !is_finite(right)) return no_whole;
    if (__builtin_isunordered(left, right)) return no_whole;
    KORVANE_JUMP return go_on_whole(truth(holds<relation>(left, right)), at);
}

template <int relation>
WholeResult compare_wholes(std::int64_t, Token* at) {
    const Whole left = left_whole(at);
    if (left.failed != 0) return left;
    const Whole right = right_whole(at);
    if (right.failed != 0) return right;
    KORVANE_JUMP return go_on_whole(truth(holds<relation>(left.value, right.value)), at);
}

using WholeStep = WholeResult (*)(std::int64_t, Token*);

template <int relation>
WholeStep choose_for(const OperatorRecord& record, Domain domain) {
    if (domain == Domain::whole) return compare_wholes<relation>;
    if (domain == Domain::single) return compare_plain<relation, float>;
    const bool plain = is_plain<double>(record.left_kind) && is_plain<double>(record.right_kind);
    return plain ? compare_plain<relation, double> : compare_reals<relation>;
}

// Exchanges the sides of an operator that asks whether the left one is greater, so that numbers need only be
// looked at the other way round; gives the relation to ask for now.
int put_lesser_first(Token* at) {
    if (at->kind == '>') {
        auto& record = as<OperatorRecord>(at);
        std::swap(record.left_kind, record.right_kind);
        std::swap(record.left_leaf, record.right_leaf);
        std::swap(record.left_chain, record.right_chain);
    }
    return lesser_first(at);
}

}  // namespace

int lesser_first(const Token* at) {
    const int relation = read_relation(at);
    if (relation == GREATER) return LESS;
    return relation == (GREATER | EQUAL) ? LESS | EQUAL : relation;
}

[[gnu::cold]] void set_comparison_step(Token* at, Domain domain, bool with_care) {
    auto& record = as<OperatorRecord>(at);
    if (with_care) {
        record.function.whole = domain == Domain::whole ? compare_wholes_with_care : compare_reals_with_care;
        return;
    }
    const int relation = put_lesser_first(at);
    record.function.whole = choose<LESS, EQUAL, LESS | EQUAL, LESS | GREATER>(
        relation, [&](auto listed) { return choose_for<listed()>(record, domain); });
}

}  // namespace korvane::fast
