// The array's name is the statement's first token and the bracket the second one.
#include "fast/element_assignments.h"

#include "fast/assign.h"
#include "fast/elements.h"
#include "fast/expression.h"
#include "fast/statement.h"
#include "fast/text_assignments.h"

namespace korvane::fast {
namespace {

template <Type type>
std::uint64_t let_element(Current at, std::uint64_t budget) {
    Token* equals = equals_of_element(at);
    std::uint8_t* string_top = arenas.FREETOP;
    std::uint8_t* place = find_element<storage_size(type), Subscripts::any>(at + 1);
    if (place == nullptr || !assign<type>(place, equals)) return fall_back(at, budget, string_top);
    KORVANE_JUMP return proceed(after(equals), budget);
}

// The frequent shapes, whose value can be taken before the element is found: a plain side for a DOUBLE
// element, and a literal for an INTEGER one.
template <Subscripts subscripts>
std::uint64_t let_plain_element(Current at, std::uint64_t budget) {
    const auto value = plain_right<double>(equals_of_element(at));
    std::uint8_t* place = find_element<8, subscripts>(at + 1);
    if (place == nullptr || !store_number<double>(place, value))
        KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(equals_of_element(at)), budget);
}

std::uint64_t let_integer_element(Current at, std::uint64_t budget) {
    const Token* equals = equals_of_element(at);
    const auto literal = read<std::int64_t>(as<AssignmentRecord>(equals).value_leaf);
    std::uint8_t* place = find_element<2, Subscripts::one>(at + 1);
    if (place == nullptr || !store_number<std::int16_t>(place, literal))
        KORVANE_JUMP return execute_general(at, budget);
    KORVANE_JUMP return proceed(after(equals), budget);
}

// The handler for a frequent shape, or null.
Execute choose_element_shape(const Node& element, std::uint8_t value_kind) {
    const Subscripts subscripts = subscripts_of(element);
    const Type type = element.type;
    if (subscripts == Subscripts::any) return nullptr;
    if (type == Type::DOUBLE && is_plain<double>(value_kind)) {
        return subscripts == Subscripts::one ? guarded<let_plain_element<Subscripts::one>>
                                             : guarded<let_plain_element<Subscripts::two>>;
    }
    const bool literal = value_kind == side_kind(I64, false, Domain::whole);
    return type == Type::INTEGER && subscripts == Subscripts::one && literal ? guarded<let_integer_element>
                                                                             : nullptr;
}

}  // namespace

Execute element_handler(const Node& element, const Node& value) {
    // What takes string space or random numbers has to give them back when it fails.
    const bool takes = element.takes() || value.takes();
    const Execute shape = takes ? nullptr : choose_element_shape(element, value.kind);
    if (shape != nullptr) return shape;
    if (element.type == Type::STRING) return choose_text_element_assignment(value);
    return choose_by_type(element.type,
                          [](auto listed) -> Execute { return guarded<let_element<listed()>>; });
}

}  // namespace korvane::fast
