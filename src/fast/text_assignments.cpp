#include "fast/text_assignments.h"

#include "fast/assign.h"
#include "fast/element_steps.h"
#include "fast/text_sides.h"
#include "fast/text_steps.h"

namespace korvane::fast {
namespace {

// The place that is assigned to; null when a subscript is out of range.
template <bool to_element>
inline std::uint8_t* target(Token* at, const Token* equals) {
    if constexpr (to_element) return text_element_address(at + 1);
    return place_of(equals);
}

template <bool to_element>
std::uint64_t let_text(Current at, std::uint64_t budget) {
    const Token* equals = to_element ? equals_of_element(at) : at + 1;
    std::uint8_t* string_top = arenas.FREETOP;
    std::uint8_t* place = target<to_element>(at, equals);
    if (place == nullptr) return fall_back(at, budget, string_top);
    const Value text = right_text(equals);
    if (failed(text) || !store_text(place, text)) return fall_back(at, budget, string_top);
    KORVANE_JUMP return proceed(after(equals), budget);
}

// A text joined from two. Like the general evaluator, this leaves it in string space twice.
template <bool to_element>
std::uint64_t let_joined(Current at, std::uint64_t budget) {
    const Token* equals = to_element ? equals_of_element(at) : at + 1;
    std::uint8_t* string_top = arenas.FREETOP;
    std::uint8_t* place = target<to_element>(at, equals);
    if (place == nullptr) return fall_back(at, budget, string_top);
    const Value text = joined(as<AssignmentRecord>(equals).value_chain, 2);
    if (failed(text)) return fall_back(at, budget, string_top);
    write_text(place, text);
    KORVANE_JUMP return proceed(after(equals), budget);
}

// "+" is the only operator between texts that gives a text.
bool is_joined(const Node& value) {
    return value.form == Form::binary;
}

}  // namespace

Execute choose_text_assignment(const Node& value) {
    return is_joined(value) ? guarded<let_joined<false>> : guarded<let_text<false>>;
}
Execute choose_text_element_assignment(const Node& value) {
    return is_joined(value) ? guarded<let_joined<true>> : guarded<let_text<true>>;
}

}  // namespace korvane::fast
