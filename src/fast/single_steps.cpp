// Steps of the single domain, where the accumulator is a float. A SINGLE result is computed in binary64 and
// rounded to binary32; for two floats that is the same as computing in binary32, because binary64 has more
// than twice the digits.
#include "fast/single_steps.h"

#include "fast/number_steps.h"
#include "fast/sides.h"

namespace korvane::fast {
namespace {

template <char operation, typename Number>
inline float apply(Number left, Number right) {
    if constexpr (operation == '+') return static_cast<float>(left + right);
    if constexpr (operation == '-') return static_cast<float>(left - right);
    if constexpr (operation == '*') return static_cast<float>(left * right);
    // An infinite divisor would hide that it is one.
    if constexpr (operation == '/') {
        return static_cast<float>(is_finite(right) ? left / right : static_cast<Number>(no_number()));
    }
}

template <char operation>
float with_single(float accumulator, Token* at) {
    return go_on_single(apply<operation>(accumulator, read<float>(at->step.operand)), at);
}

// A literal, or an INTEGER: a double that a float holds exactly.
template <char operation>
float with_literal(float accumulator, Token* at) {
    return go_on_single(apply<operation>(accumulator, static_cast<float>(read<double>(at->step.operand))),
                        at);
}

template <char operation, Leaf leaf>
float with_chain(float accumulator, Token* at) {
    Token* inner = at->step.inner;
    const float right = inner->step.single(static_cast<float>(real_leaf<leaf>(at->step.operand)), inner);
    return go_on_single(apply<operation>(accumulator, right), at);
}

template <char operation>
float with_side(float accumulator, Token* at) {
    return go_on_single(apply<operation>(static_cast<double>(accumulator), right_real(at)), at);
}

template <char operation>
float with_both_sides(float, Token* at) {
    const double left = left_real(at);
    return go_on_single(apply<operation>(left, right_real(at)), at);
}

using SingleStep = float (*)(float, Token*);

template <char operation>
SingleStep chained(std::uint8_t right_kind) {
    switch (right_kind) {
        case F64:
            return with_literal<operation>;
        case F32:
            return with_single<operation>;
        case side_kind(F32, true, Domain::SINGLE):
            return with_chain<operation, F32>;
        case side_kind(COMPUTED, true, Domain::SINGLE):
            return with_chain<operation, COMPUTED>;
        default:
            return with_side<operation>;
    }
}

float negate(float, Token* at) {
    return go_on_single(static_cast<float>(-right_real(at)), at);
}

}  // namespace

bool set_chained_single_step(Token* at) {
    switch (at->kind) {
        case '+':
            at->step.single = chained<'+'>(at->right_kind);
            return true;
        case '-':
            at->step.single = chained<'-'>(at->right_kind);
            return true;
        case '*':
            at->step.single = chained<'*'>(at->right_kind);
            return true;
        case '/':
            at->step.single = chained<'/'>(at->right_kind);
            return true;
        default:
            return false;
    }
}

bool set_computed_single_step(Token* at) {
    switch (at->kind) {
        case '+':
            at->step.single = with_both_sides<'+'>;
            return true;
        case '-':
            at->step.single = with_both_sides<'-'>;
            return true;
        case '*':
            at->step.single = with_both_sides<'*'>;
            return true;
        case '/':
            at->step.single = with_both_sides<'/'>;
            return true;
        default:
            return false;
    }
}

void set_single_sign_step(Token* at) {
    at->step.single = negate;
}

}  // namespace korvane::fast
