// There are four forms of a step: its right operand is a leaf, a chain that begins in the domain, or any
// side, while the accumulator carries the left one; or it begins a chain and both operands are sides. What
// differs between the domains is told by a class for each. Whole results that do not fit end the chain as
// failed: the general evaluator makes a DOUBLE of them.
#include "fast/operator_steps.h"

#include "fast/arithmetic.h"
#include "fast/choose.h"
#include "fast/sides.h"
#include "program/keywords.h"
#include "values/power.h"

namespace korvane::fast {
namespace {

// ---- The domains --------------------------------------------------------------------------------

inline double raise_to(double left, double right) {
    return is_finite(left) && is_finite(right) ? power_or_nan(left, right) : no_number();
}

struct Reals {
    using Number = double;
    using Result = double;
    static constexpr Leaf own_leaf = F64;

    template <Leaf leaf>
    static double read_leaf(const void* operand) {
        return real_leaf<leaf>(operand);
    }
    static double chain(double start, Token* first) { return call_chain(start, first); }
    static double left(const Token* at) { return left_real(at); }
    static double right(const Token* at) { return right_real(at); }
    static double right_of_both(const Token* at) { return right_real(at); }

    template <int operation>
    static double combine(double left, double right) {
        if constexpr (operation == '^') return raise_to(left, right);
        if constexpr (operation != '^') return apply<operation>(left, right);
    }
    static double go_on(double result, Token* at) { KORVANE_JUMP return fast::go_on(result, at); }
};

// Where an operand may be something that a float cannot hold, it is taken as a double.
struct Singles {
    using Number = float;
    using Result = float;
    static constexpr Leaf own_leaf = F32;

    template <Leaf leaf>
    static float read_leaf(const void* operand) {
        return read<float>(operand);
    }
    static float chain(float start, Token* first) { return call_chain(start, first); }
    static double left(const Token* at) { return left_real(at); }
    static double right(const Token* at) { return right_real(at); }
    static double right_of_both(const Token* at) { return right_real(at); }

    template <int operation, typename Left, typename Right>
    static float combine(Left left, Right right) {
        using Wider = std::common_type_t<Left, Right>;
        return static_cast<float>(apply<operation, Wider>(left, right));
    }
    static float go_on(float result, Token* at) { KORVANE_JUMP return go_on_single(result, at); }
};

template <int operation>
inline Whole apply_whole(std::int64_t left, std::int64_t right) {
    std::int64_t result = 0;
    bool failed = false;
    if constexpr (operation == '+') failed = __builtin_add_overflow(left, right, &result);
    if constexpr (operation == '-') failed = __builtin_sub_overflow(left, right, &result);
    if constexpr (operation == '*') failed = multiply_overflows(left, right, result);
    if constexpr (operation == '\\' || operation == KW_MOD) {
        if (right == 0 || right == -1) {
            if (right == 0 || left == INT64_MIN) return no_whole;
            return {operation == '\\' ? -left : 0, 0};
        }
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

struct Wholes {
    using Number = std::int64_t;
    using Result = WholeResult;
    static constexpr Leaf own_leaf = I64;  // stands for the zero in front of a computed value

    template <Leaf leaf>
    static std::int64_t read_leaf(const void* operand) {
        return whole_leaf<leaf>(operand);
    }
    static Whole chain(std::int64_t start, Token* first) { return call_chain(start, first); }
    static Whole left(const Token* at) {
        const auto& record = as<OperatorRecord>(at);
        return record.left_kind == F64 ? round_whole(read<double>(record.left_leaf)) : left_whole(at);
    }
    static Whole right(const Token* at) { return right_whole(at); }
    static Whole right_of_both(const Token* at) { return quick_right_whole(at); }

    template <int operation>
    static Whole combine(std::int64_t left, std::int64_t right) {
        return apply_whole<operation>(left, right);
    }
    template <int operation>
    static Whole combine(std::int64_t left, Whole right) {
        return right.failed != 0 ? right : apply_whole<operation>(left, right.value);
    }
    static WholeResult go_on(std::int64_t result, Token* at) { KORVANE_JUMP return go_on_whole(result, at); }
};

// What an operand or a result is, in a domain that has failures of its own and in one that has none.
constexpr bool has_failed(double) {
    return false;
}
inline bool has_failed(const Whole& whole) {
    return __builtin_expect(whole.failed != 0, false);
}
template <typename Number>
constexpr Number number_in(Number number) {
    return number;
}
constexpr std::int64_t number_in(const Whole& whole) {
    return whole.value;
}

// ---- The forms ----------------------------------------------------------------------------------

template <typename In, int operation, Leaf leaf>
typename In::Result with_leaf(typename In::Number accumulator, Token* at) {
    const auto right = In::template read_leaf<leaf>(as<OperatorRecord>(at).right_leaf);
    const auto result = In::template combine<operation>(accumulator, right);
    if (has_failed(result)) return result;
    KORVANE_JUMP return In::go_on(number_in(result), at);
}

// The chain is of the same domain, behind a leaf, or begins with a value of its own behind any leaf.
template <typename In, int operation, Leaf leaf>
typename In::Result with_chain(typename In::Number accumulator, Token* at) {
    const auto& record = as<OperatorRecord>(at);
    const auto right = In::chain(In::template read_leaf<leaf>(record.right_leaf), record.right_chain);
    const auto result = In::template combine<operation>(accumulator, right);
    if (has_failed(result)) return result;
    KORVANE_JUMP return In::go_on(number_in(result), at);
}

template <typename In, int operation>
typename In::Result with_side(typename In::Number accumulator, Token* at) {
    const auto result = In::template combine<operation>(accumulator, In::right(at));
    if (has_failed(result)) return result;
    KORVANE_JUMP return In::go_on(number_in(result), at);
}

template <typename In, int operation>
typename In::Result with_both_sides(typename In::Number, Token* at) {
    const auto left = In::left(at);
    if constexpr (std::is_same_v<decltype(left), const Whole>) {
        if (left.failed != 0) return left;
    }
    const auto result = In::template combine<operation>(number_in(left), In::right_of_both(at));
    if (has_failed(result)) return result;
    KORVANE_JUMP return In::go_on(number_in(result), at);
}

// ---- Which of them there are --------------------------------------------------------------------

template <typename In>
using StepOf = typename In::Result (*)(typename In::Number, Token*);

// The step for one kind of right side.
template <typename In, int operation, std::uint8_t kind>
constexpr StepOf<In> for_kind() {
    constexpr auto leaf = static_cast<Leaf>(kind & leaf_mask);
    if constexpr ((kind & has_chain) == 0) return with_leaf<In, operation, leaf>;
    if constexpr ((kind & has_chain) != 0)
        return with_chain < In, operation, leaf == COMPUTED ? In::own_leaf : leaf > ;
}

// The step of an operator that has some of its own for these kinds of right sides.
template <typename In, int operation, std::uint8_t... kinds>
StepOf<In> pick(const Token* at, bool chained) {
    if (!chained) return with_both_sides<In, operation>;
    const StepOf<In> step = choose<kinds...>(as<OperatorRecord>(at).right_kind,
                                             [](auto kind) { return for_kind<In, operation, kind()>(); });
    return step != nullptr ? step : with_side<In, operation>;
}

template <int operation>
StepOf<Reals> pick_real(const Token* at, bool chained) {
    return pick<Reals, operation, F64, F32, I16, I32, I64, side_kind(F64, true, Domain::real),
                computed_kind(Domain::real)>(at, chained);
}

template <int operation>
StepOf<Singles> pick_single(const Token* at, bool chained) {
    return pick<Singles, operation, F32, side_kind(F32, true, Domain::single), computed_kind(Domain::single)>(
        at, chained);
}

// Chains have steps of their own where they are frequent: what a comparison or a call begins, and products
// in sums.
template <int operation>
StepOf<Wholes> pick_whole(const Token* at, bool chained) {
    constexpr std::uint8_t i16 = side_kind(I16, false, Domain::whole);
    constexpr std::uint8_t i32 = side_kind(I32, false, Domain::whole);
    constexpr std::uint8_t i64 = side_kind(I64, false, Domain::whole);
    constexpr std::uint8_t any = computed_kind(Domain::whole);
    if constexpr (operation == '+' || operation == '-' || operation == '*') {
        return pick<Wholes, operation, i16, i32, i64, i16 | has_chain, i32 | has_chain, i64 | has_chain, any>(
            at, chained);
    } else if constexpr (operation == KW_AND || operation == KW_OR) {
        return pick<Wholes, operation, i16, i32, i64, i64 | has_chain, any>(at, chained);
    } else {
        return pick<Wholes, operation, i16, i32, i64>(at, chained);
    }
}

[[gnu::cold]] void set_operator_step(Token* at, Domain domain, bool chained) {
    StepFunction& function = as<OperatorRecord>(at).function;
    switch (domain) {
        case Domain::real:
            function.real = choose<'+', '-', '*', '/', '^'>(
                at->kind, [=](auto operation) { return pick_real<operation()>(at, chained); });
            break;
        case Domain::single:
            function.single = choose<'+', '-', '*', '/'>(
                at->kind, [=](auto operation) { return pick_single<operation()>(at, chained); });
            break;
        default:
            function.whole = choose<'+', '-', '*', '\\', KW_MOD, KW_AND, KW_OR, KW_XOR, KW_EQV, KW_IMP>(
                at->kind, [=](auto operation) { return pick_whole<operation()>(at, chained); });
            break;
    }
}

// ---- Signs and NOT ------------------------------------------------------------------------------

double negate_real(double, Token* at) {
    KORVANE_JUMP return go_on(-right_real(at), at);
}

float negate_single(float, Token* at) {
    KORVANE_JUMP return go_on_single(static_cast<float>(-right_real(at)), at);
}

WholeResult negate_whole(std::int64_t, Token* at) {
    const Whole result = Wholes::combine<'-'>(0, right_whole(at));
    if (has_failed(result)) return result;
    KORVANE_JUMP return go_on_whole(result.value, at);
}

WholeResult complement(std::int64_t, Token* at) {
    const Whole operand = right_whole(at);
    if (operand.failed != 0) return operand;
    KORVANE_JUMP return go_on_whole(~operand.value, at);
}

}  // namespace

void set_chained_step(Token* at, Domain domain) {
    set_operator_step(at, domain, true);
}
void set_computed_step(Token* at, Domain domain) {
    set_operator_step(at, domain, false);
}

void set_sign_step(Token* at, Domain domain) {
    StepFunction& function = as<OperatorRecord>(at).function;
    switch (domain) {
        case Domain::real:
            function.real = negate_real;
            break;
        case Domain::single:
            function.single = negate_single;
            break;
        default:
            function.whole = negate_whole;
            break;
    }
}

void set_not_step(Token* at) {
    as<OperatorRecord>(at).function.whole = complement;
}

}  // namespace korvane::fast
