// Steps of the whole domain, where the accumulator is a 64-bit integer. A result that does not fit ends the
// chain as failed: the general evaluator makes a DOUBLE of it.
#include "fast/whole_steps.h"

#include "fast/number_steps.h"
#include "fast/sides.h"
#include "program/keywords.h"

namespace korvane::fast {
namespace {

template <int operation>
inline Whole apply(std::int64_t left, std::int64_t right) {
    std::int64_t result = 0;
    bool failed = false;
    if constexpr (operation == '+') failed = __builtin_add_overflow(left, right, &result);
    if constexpr (operation == '-') failed = __builtin_sub_overflow(left, right, &result);
    if constexpr (operation == '*') failed = __builtin_mul_overflow(left, right, &result);
    if constexpr (operation == '\\' || operation == KW_MOD) {
        // Divisors 0 and -1 are left to the general evaluator: the one is an error, the other may be.
        if (right == 0 || right == -1) return {0, 1};
        // Most numbers fit in 32 bits, and processors divide those much faster.
        if (((static_cast<std::uint64_t>(left) | static_cast<std::uint64_t>(right)) >> 32) == 0) {
            const auto dividend = static_cast<std::uint32_t>(left);
            const auto divisor = static_cast<std::uint32_t>(right);
            result = operation == '\\' ? dividend / divisor : dividend % divisor;
        } else {
            result = operation == '\\' ? left / right : left % right;
        }
    }
    if constexpr (operation == KW_AND) result = left & right;
    if constexpr (operation == KW_OR) result = left | right;
    if constexpr (operation == KW_XOR) result = left ^ right;
    if constexpr (operation == KW_EQV) result = ~(left ^ right);
    if constexpr (operation == KW_IMP) result = ~left | right;
    return {result, failed};
}

template <int operation>
inline Whole finish(std::int64_t left, std::int64_t right, Token* at) {
    const Whole result = apply<operation>(left, right);
    return __builtin_expect(result.failed != 0, false) ? result : go_on_whole(result.value, at);
}

template <int operation, Leaf leaf>
Whole with_leaf(std::int64_t accumulator, Token* at) {
    return finish<operation>(accumulator, whole_leaf<leaf>(at->step.operand), at);
}

// The right operand is a chain of the same domain behind a leaf.
template <int operation, Leaf leaf>
Whole with_chain(std::int64_t accumulator, Token* at) {
    Token* inner = at->step.inner;
    const Whole right = inner->step.whole(whole_leaf<leaf>(at->step.operand), inner);
    return right.failed != 0 ? right : finish<operation>(accumulator, right.value, at);
}

template <int operation>
Whole with_side(std::int64_t accumulator, Token* at) {
    const Whole right = right_whole(at);
    return right.failed != 0 ? right : finish<operation>(accumulator, right.value, at);
}

template <int operation>
Whole with_both_sides(std::int64_t, Token* at) {
    const Whole left =
        at->left_kind == F64 ? round_whole(read<double>(at->step.left_operand)) : left_whole(at);
    if (left.failed != 0) return left;
    const Whole right = quick_right_whole(at);
    return right.failed != 0 ? right : finish<operation>(left.value, right.value, at);
}

using WholeStep = Whole (*)(std::int64_t, Token*);

// The frequent chains: what a comparison or a call begins, and products in sums.
template <int operation>
WholeStep chained_to_chain(std::uint8_t right_kind) {
    constexpr bool arithmetic = operation == '+' || operation == '-' || operation == '*';
    constexpr bool logical = operation == KW_AND || operation == KW_OR;
    if constexpr (arithmetic) {
        if (right_kind == side_kind(I16, true, Domain::WHOLE)) return with_chain<operation, I16>;
        if (right_kind == side_kind(I32, true, Domain::WHOLE)) return with_chain<operation, I32>;
    }
    if constexpr (arithmetic || logical) {
        if (right_kind == side_kind(COMPUTED, true, Domain::WHOLE) ||
            right_kind == side_kind(I64, true, Domain::WHOLE)) {
            return with_chain<operation, I64>;
        }
    }
    return with_side<operation>;
}

template <int operation>
void choose(Token* at, bool chained) {
    WholeStep step = with_both_sides<operation>;
    if (chained) {
        switch (at->right_kind) {
            case side_kind(I16, false, Domain::WHOLE):
                step = with_leaf<operation, I16>;
                break;
            case side_kind(I32, false, Domain::WHOLE):
                step = with_leaf<operation, I32>;
                break;
            case side_kind(I64, false, Domain::WHOLE):
                step = with_leaf<operation, I64>;
                break;
            default:
                step = chained_to_chain<operation>(at->right_kind);
                break;
        }
    }
    at->step.whole = step;
}

bool set_step(Token* at, bool chained) {
    switch (at->kind) {
        case '+':
            choose<'+'>(at, chained);
            return true;
        case '-':
            choose<'-'>(at, chained);
            return true;
        case '*':
            choose<'*'>(at, chained);
            return true;
        case '\\':
            choose<'\\'>(at, chained);
            return true;
        case KW_MOD:
            choose<KW_MOD>(at, chained);
            return true;
        case KW_AND:
            choose<KW_AND>(at, chained);
            return true;
        case KW_OR:
            choose<KW_OR>(at, chained);
            return true;
        case KW_XOR:
            choose<KW_XOR>(at, chained);
            return true;
        case KW_EQV:
            choose<KW_EQV>(at, chained);
            return true;
        case KW_IMP:
            choose<KW_IMP>(at, chained);
            return true;
        default:
            return false;
    }
}

Whole negate(std::int64_t, Token* at) {
    const Whole operand = right_whole(at);
    return operand.failed != 0 ? operand : finish<'-'>(0, operand.value, at);
}

Whole complement(std::int64_t, Token* at) {
    const Whole operand = right_whole(at);
    return operand.failed != 0 ? operand : go_on_whole(~operand.value, at);
}

}  // namespace

bool set_chained_whole_step(Token* at) {
    return set_step(at, true);
}
bool set_computed_whole_step(Token* at) {
    return set_step(at, false);
}
void set_whole_sign_step(Token* at) {
    at->step.whole = negate;
}
void set_not_step(Token* at) {
    at->step.whole = complement;
}

}  // namespace korvane::fast
