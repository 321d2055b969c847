// Steps of the real domain, where the accumulator is a double. Results that are no finite numbers travel on:
// they stay so through + - *, and whoever takes the chain's result looks. Only a divisor is looked at before
// it can hide one.
#include "fast/real_steps.h"

#include "fast/number_steps.h"
#include "fast/sides.h"
#include "values/power.h"

namespace korvane::fast {
namespace {

template <char operation>
inline double apply(double left, double right) {
    if constexpr (operation == '+') return left + right;
    if constexpr (operation == '-') return left - right;
    if constexpr (operation == '*') return left * right;
    if constexpr (operation == '/') return is_finite(right) ? left / right : no_number();
    if constexpr (operation == '^') {
        return is_finite(left) && is_finite(right) ? power_or_nan(left, right) : no_number();
    }
}

template <char operation, Leaf leaf>
double with_leaf(double accumulator, Token* at) {
    return go_on(apply<operation>(accumulator, real_leaf<leaf>(at->step.operand)), at);
}

// The right operand is a chain of the same domain that begins with a DOUBLE, or with a value of its own.
template <char operation, Leaf leaf>
double with_chain(double accumulator, Token* at) {
    Token* inner = at->step.inner;
    const double right = inner->step.real(real_leaf<leaf>(at->step.operand), inner);
    return go_on(apply<operation>(accumulator, right), at);
}

template <char operation>
double with_side(double accumulator, Token* at) {
    return go_on(apply<operation>(accumulator, right_real(at)), at);
}

template <char operation>
double with_both_sides(double, Token* at) {
    const double left = left_real(at);
    return go_on(apply<operation>(left, right_real(at)), at);
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
            return with_chain<operation, F64>;
        case side_kind(COMPUTED, true, Domain::REAL):
            return with_chain<operation, COMPUTED>;
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
