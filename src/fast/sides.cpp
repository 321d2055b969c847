#include "fast/sides.h"

namespace korvane::fast {
namespace {

double leaf_as_real(std::uint8_t leaf, const void* operand) {
    switch (leaf) {
        case F64:
            return real_leaf<F64>(operand);
        case F32:
            return real_leaf<F32>(operand);
        case I16:
            return real_leaf<I16>(operand);
        case I32:
            return real_leaf<I32>(operand);
        case I64:
            return real_leaf<I64>(operand);
        default:
            return 0;
    }
}

std::int64_t leaf_as_whole(std::uint8_t leaf, const void* operand) {
    switch (leaf) {
        case I16:
            return whole_leaf<I16>(operand);
        case I32:
            return whole_leaf<I32>(operand);
        case I64:
            return whole_leaf<I64>(operand);
        default:
            return 0;
    }
}

}  // namespace

double real_side(std::uint8_t kind, const void* operand, Token* inner) {
    const std::uint8_t leaf = kind & leaf_mask;
    if ((kind & has_chain) == 0) return leaf_as_real(leaf, operand);
    switch (domain_of_kind(kind)) {
        case Domain::REAL:
            return inner->step.real(leaf_as_real(leaf, operand), inner);
        case Domain::SINGLE:
            return inner->step.single(static_cast<float>(leaf_as_real(leaf, operand)), inner);
        default: {
            const Whole whole = inner->step.whole(leaf_as_whole(leaf, operand), inner);
            return whole.failed != 0 ? no_number() : static_cast<double>(whole.value);
        }
    }
}

Whole whole_side(std::uint8_t kind, const void* operand, Token* inner) {
    const std::uint8_t leaf = kind & leaf_mask;
    if (domain_of_kind(kind) != Domain::WHOLE) return round_whole(real_side(kind, operand, inner));
    const std::int64_t start = leaf_as_whole(leaf, operand);
    return (kind & has_chain) == 0 ? Whole{start, 0} : inner->step.whole(start, inner);
}

}  // namespace korvane::fast
