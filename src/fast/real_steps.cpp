// Steps of the real domain, where the accumulator is a double.
#include "fast/real_steps.h"

#include "fast/arithmetic.h"
#include "fast/number_steps.h"
#include "fast/sides.h"
#include "values/power.h"

namespace korvane::fast {
namespace {

inline double raise_to(double left, double right) {
    return is_finite(left) && is_finite(right) ? power_or_nan(left, right) : no_number();
}

template <char operation>
inline double combine(double left, double right) {
    if constexpr (operation == '^') return raise_to(left, right);
    if constexpr (operation != '^') return apply<operation>(left, right);
}

template <char operation, Leaf leaf>
double with_leaf(double accumulator, Token* at) {
    return go_on(combine<operation>(accumulator, real_leaf<leaf>(at->step.operand)), at);
}

// The right operand is a chain of the same domain that begins with a DOUBLE, or with a value of its own.
template <char operation>
double with_chain(double accumulator, Token* at) {
    const double right = call_chain(read<double>(at->step.operand), at->step.inner);
    return go_on(combine<operation>(accumulator, right), at);
}

template <char operation>
double with_side(double accumulator, Token* at) {
    return go_on(combine<operation>(accumulator, right_real(at)), at);
}

template <char operation>
double with_both_sides(double, Token* at) {
    const double left = left_real(at);
    return go_on(combine<operation>(left, right_real(at)), at);
}

using RealStep = double (*)(double, Token*);

template <char operation>
RealStep chained(std::uint8_t right_kind) {
    switch (right_kind) {
        case F64:
            return with_leaf<operation, F64>;
        case F32:
            return with_leaf<operation, F32>;
        case I16:
            return with_leaf<operation, I16>;
        case I32:
            return with_leaf<operation, I32>;
        case I64:
            return with_leaf<operation, I64>;
        case side_kind(F64, true, Domain::REAL):
        case side_kind(COMPUTED, true, Domain::REAL):
            return with_chain<operation>;
        default:
            return with_side<operation>;
    }
}

double negate(double, Token* at) {
    return go_on(-right_real(at), at);
}

}  // namespace

bool set_chained_real_step(Token* at) {
    switch (at->kind) {
        case '+':
            at->step.real = chained<'+'>(at->right_kind);
            return true;
        case '-':
            at->step.real = chained<'-'>(at->right_kind);
            return true;
        case '*':
            at->step.real = chained<'*'>(at->right_kind);
            return true;
        case '/':
            at->step.real = chained<'/'>(at->right_kind);
            return true;
        case '^':
            at->step.real = chained<'^'>(at->right_kind);
            return true;
        default:
            return false;
    }
}

bool set_computed_real_step(Token* at) {
    switch (at->kind) {
        case '+':
            at->step.real = with_both_sides<'+'>;
            return true;
        case '-':
            at->step.real = with_both_sides<'-'>;
            return true;
        case '*':
            at->step.real = with_both_sides<'*'>;
            return true;
        case '/':
            at->step.real = with_both_sides<'/'>;
            return true;
        case '^':
            at->step.real = with_both_sides<'^'>;
            return true;
        default:
            return false;
    }
}

void set_real_sign_step(Token* at) {
    at->step.real = negate;
}

}  // namespace korvane::fast
