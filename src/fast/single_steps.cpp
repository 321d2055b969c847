// Steps of the single domain, where the accumulator is a float.
#include "fast/single_steps.h"

#include "fast/arithmetic.h"
#include "fast/number_steps.h"
#include "fast/sides.h"

namespace korvane::fast {
namespace {

template <char operation>
float with_leaf(float accumulator, Token* at) {
    return go_on_single(apply<operation>(accumulator, read<float>(at->step.operand)), at);
}

template <char operation>
float with_chain(float accumulator, Token* at) {
    const float right = call_chain(read<float>(at->step.operand), at->step.inner);
    return go_on_single(apply<operation>(accumulator, right), at);
}

// Where an operand may be something that a float cannot hold, it is taken as a double.
template <char operation>
float with_side(float accumulator, Token* at) {
    return go_on_single(static_cast<float>(apply<operation, double>(accumulator, right_real(at))), at);
}

template <char operation>
float with_both_sides(float, Token* at) {
    const double left = left_real(at);
    return go_on_single(static_cast<float>(apply<operation>(left, right_real(at))), at);
}

using SingleStep = float (*)(float, Token*);

template <char operation>
SingleStep chained(std::uint8_t right_kind) {
    switch (right_kind) {
        case F32:
            return with_leaf<operation>;
        case side_kind(F32, true, Domain::SINGLE):
        case side_kind(COMPUTED, true, Domain::SINGLE):
            return with_chain<operation>;
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
