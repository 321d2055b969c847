// Elements of arrays: their subscripts, and where they lie.
#include "native/emitter.h"
#include "values/variables.h"

namespace korvane::native {
namespace {

using fast::Form;
using fast::none;

}  // namespace

// Gives the register of a subscript counted from the lower bound: the next one for integers, or the
// variable's own.
Register Emitter::subscript(const Node& argument, std::int64_t bound, int reals, int wholes) {
    const Register target = whole_register(wholes);
    const Node& value = node_at(argument.value);
    const std::int64_t last = bound - variables.array_base;
    if (last != static_cast<std::int32_t>(last)) give_up();
    if (value.form == Form::variable) use(value.storage, value.type, Region::Way::subscript);
    const KeptVariable* kept = find_whole_of(value);
    Detour* detour = kept == nullptr ? nullptr : add_detour(Detour::Kind::subscript);
    Register where = target;
    if (detour != nullptr) {
        where = detour->target = kept->whole;
        detour->number = kept->where;
        code.bind(detour->back);
    } else {
        whole(argument.value, reals, wholes);
    }
    if (variables.array_base != 0) {
        code.emit(Operation::lea, target, at(where, -1));
        where = target;
    }
    code.emit(WithNumber::cmp, where, static_cast<std::int32_t>(last));
    code.jump_if(Condition::above, detour != nullptr ? detour->start : current->fail);
    return where;
}

// The variable that a node is, if its whole number has a register.
const KeptVariable* Emitter::find_whole_of(const Node& node) const {
    if (node.form != Form::variable || find_bound(node) != nullptr) return nullptr;
    const KeptVariable* kept = variables_kept.find(node.storage);
    return kept != nullptr && kept->is_subscript() ? kept : nullptr;
}

// The place of an element, whose index takes the next register for integers.
Operand Emitter::element(const Node& node, int reals, int wholes) {
    const ArrayBlock* array = node.array;
    const Register target = whole_register(wholes);
    const auto size = storage_size(node.type);
    std::uint8_t* const elements = const_cast<ArrayBlock*>(array)->elements();
    // A literal that is in range needs no more than its element's address.
    const Node& only = node_at(node_at(node.first_argument).value);
    if (array->dimensions == 1 && only.form == Form::literal && is_integer(only.type)) {
        const std::int64_t number = only.token->number.integer;
        if (number >= variables.array_base && number <= array->bounds[0])
            return place(elements + static_cast<std::size_t>(number - variables.array_base) * size);
    }
    Register index = target;
    std::size_t dimension = 0;
    for (std::int16_t i = node.first_argument; i != none; i = node_at(i).next_argument, ++dimension) {
        const std::int64_t bound = array->bounds[dimension];
        if (dimension == 0) {
            index = subscript(node_at(i), bound, reals, wholes);
            continue;
        }
        const std::uint64_t extent = array_extent(bound);
        if (extent != static_cast<std::uint64_t>(static_cast<std::int32_t>(extent))) give_up();
        code.multiply(target, index, static_cast<std::int32_t>(extent));
        index = target;
        code.emit(Operation::add, target, subscript(node_at(i), bound, reals, wholes + 1));
    }
    const Operand first = place(elements);
    if (size == 16) {
        if (index != target) code.emit(Operation::mov, target, index);
        code.shift(Shift::left, target, 1);
        index = target;
    }
    return first.with_index(index, size == 2 ? 1 : size == 4 ? 2 : 3);
}

}  // namespace korvane::native
