#include "fast/sides.h"

#include "screen/keyboard.h"
#include "values/functions.h"

namespace korvane::fast {
namespace {

double leaf_as_real(std::uint8_t leaf, const void* place) {
    switch (leaf) {
        case F64:
            return real_leaf<F64>(place);
        case F32:
            return real_leaf<F32>(place);
        case I16:
            return real_leaf<I16>(place);
        case I32:
            return real_leaf<I32>(place);
        case I64:
            return real_leaf<I64>(place);
        case FUNCTION: {
            const Value value = static_cast<const BuiltInFunction*>(place)->bare();
            return is_integer(value.type) ? static_cast<double>(value.integer) : value.real;
        }
        case USER_FUNCTION:
            return !may_call_user() ? no_number()
                                    : right_real(&static_cast<const UserFunction*>(place)->head);
        default:
            return 0;
    }
}

std::int64_t leaf_as_whole(std::uint8_t leaf, const void* place) {
    switch (leaf) {
        case I16:
            return whole_leaf<I16>(place);
        case I32:
            return whole_leaf<I32>(place);
        case I64:
            return whole_leaf<I64>(place);
        case FUNCTION:
            return static_cast<const BuiltInFunction*>(place)->bare().integer;
        default:
            return 0;
    }
}

}  // namespace

[[gnu::cold]] bool refuse_call() {
    keyboard.look_ahead = break_pending;
    return false;
}

double real_side(std::uint8_t kind, const void* leaf, Token* chain) {
    const std::uint8_t type = kind & leaf_mask;
    if ((kind & has_chain) == 0) return leaf_as_real(type, leaf);
    switch (domain_of_kind(kind)) {
        case Domain::real:
            return call_chain(leaf_as_real(type, leaf), chain);
        case Domain::single:
            return call_chain(static_cast<float>(leaf_as_real(type, leaf)), chain);
        default: {
            const Whole whole = call_chain(leaf_as_whole(type, leaf), chain);
            return whole.failed != 0 ? no_number() : static_cast<double>(whole.value);
        }
    }
}

WholeResult whole_side(std::uint8_t kind, const void* leaf, Token* chain) {
    if (domain_of_kind(kind) != Domain::whole) return round_whole(real_side(kind, leaf, chain));
    if ((kind & leaf_mask) == USER_FUNCTION)
        return !may_call_user() ? no_whole : right_whole(&static_cast<const UserFunction*>(leaf)->head);
    const std::int64_t start = leaf_as_whole(kind & leaf_mask, leaf);
    if ((kind & has_chain) == 0) return Whole{start, 0};
    return call_chain(start, chain);
}

}  // namespace korvane::fast
