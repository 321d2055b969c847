// Specialised LET, which may go without its word, MID$ and SWAP. "=" holds what an assignment is about; the
// bracket of an element begins no chain and leads to it.
#include <algorithm>

#include "fast/assign.h"
#include "fast/choose.h"
#include "fast/element_assignments.h"
#include "fast/expression.h"
#include "fast/links.h"
#include "fast/places.h"
#include "fast/records.h"
#include "fast/scalar_assignments.h"
#include "fast/statement.h"
#include "fast/text_sides.h"
#include "fast/text_steps.h"
#include "platform/memory.h"
#include "program/keywords.h"
#include "program/parse.h"
#include "values/functions.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// Reads the expression behind the "=" of an assignment, which must be of the target's kind.
bool read_value(Token* equals, Type type, Expression& value) {
    return equals->kind == '=' && read_expression(equals + 1, domain_of(type), value) &&
           (value.node().type == Type::STRING) == (type == Type::STRING);
}

// Makes the "=" of the assignment at `at` hold the value.
void hold_value(const Token* at, Token* equals, const Expression& value) {
    hold(equals, value);
    as<AssignmentRecord>(equals).after = link_behind_assignment(at, equals, value.end);
}

bool specialise_scalar(Token* at) {
    Token* equals = at + 1;
    VariableEntry* entry = find_variable(at->name, false);
    Expression value;
    if (entry == nullptr || !read_value(equals, entry->type, value)) return false;
    at->execute = scalar_handler(entry->type, value.node());
    hold_value(at, equals, value);
    as<AssignmentRecord>(equals).place = entry->storage;
    if (value.node().draws) keep_random(at);
    return true;
}

bool specialise_array_element(Token* at) {
    Expression element;
    Expression value;
    if (!read_element(at, element) || !read_value(element.end, element.node().type, value)) return false;
    Token* equals = element.end;
    at->execute = element_handler(element.node(), value.node());
    bind_element(element.node());
    as<ElementRecord>(at + 1).equals = equals;
    hold_value(at, equals, value);
    if (element.node().draws || value.node().draws) keep_random(at);
    return true;
}

// Behind THEN, what was kept for the word is good for the assignment too.
std::uint64_t let_with_word(Current at, std::uint64_t budget) {
    if (execution.kept_token == at) execution.kept_token = at + 1;
    return at[1].execute(at + 1, budget);
}

// ---- MID$ ---------------------------------------------------------------------------------------

// What stands in front of "=" is read as the function's call.

// A part that may be none is for the general handler, which finds out.
std::uint64_t replace_part(Current at, std::uint64_t budget) {
    std::uint8_t* string_top = arenas.FREETOP;
    const Token* equals = as<CallRecord>(at + 1).equals;
    const Value part = middle_piece(at + 1);
    if (failed(part) || part.length == 0) return fall_back(at, budget, string_top);
    const Value value = right_text(equals);
    if (failed(value)) return fall_back(at, budget, string_top);
    // The value may be a piece of the target itself.
    move_bytes(const_cast<std::uint8_t*>(part.bytes), value.bytes, std::min(part.length, value.length));
    KORVANE_JUMP return proceed(after(equals), budget);
}

bool specialise_replacement(Token* at) {
    Expression part{.root = none, .end = at};
    Expression value;
    part.root = parse_name(part.end);
    if (part.root == none || !read_value(part.end, Type::STRING, value)) return false;
    const Node& target = node_at(node_at(part.node().first_argument).value);
    const bool is_variable =
        target.form == Form::variable && find_variable(target.token->name, false) != nullptr;
    if ((!is_variable && target.form != Form::element) || !plan(part.root, Domain::text)) return false;
    emit(part.root);
    hold_value(at, part.end, value);
    as<CallRecord>(at + 1).equals = part.end;
    at->execute = guarded<replace_part>;
    if (part.node().draws || value.node().draws) keep_random(at);
    return true;
}

// ---- SWAP ---------------------------------------------------------------------------------------

// The keyword holds the first place, the comma the second one.

template <typename Datum>
inline void exchange(std::uint8_t* first, std::uint8_t* second) {
    const auto kept = read_unaligned<Datum>(first);
    write_unaligned(first, read_unaligned<Datum>(second));
    write_unaligned(second, kept);
}

inline void exchange_numbers(Type type, std::uint8_t* first, std::uint8_t* second) {
    switch (storage_size(type)) {
        case 8:
            return exchange<std::uint64_t>(first, second);
        case 4:
            return exchange<std::uint32_t>(first, second);
        default:
            return exchange<std::uint16_t>(first, second);
    }
}

template <bool texts>
inline std::uint8_t* find_place(const Token* host) {
    const auto& place = as<PlaceRecord>(host);
    if (!place.is_element) return place.storage;
    return texts ? text_element_address(place.bracket) : element_address(place.bracket, place.type);
}

template <bool texts>
std::uint64_t swap_places(Current at, std::uint64_t budget) {
    // Subscripts may take string space.
    std::uint8_t* string_top = arenas.FREETOP;
    std::uint8_t* first = find_place<texts>(at);
    std::uint8_t* second = first == nullptr ? nullptr : find_place<texts>(as<PlaceRecord>(at).next_place);
    if (__builtin_expect(second == nullptr, false)) return fall_back(at, budget, string_top);
    if (texts)
        exchange<StringDescriptor>(first, second);
    else
        exchange_numbers(as<PlaceRecord>(at).type, first, second);
    KORVANE_JUMP return proceed(as<PlaceRecord>(at).after, budget);
}

}  // namespace

[[gnu::cold]] bool specialise_assignment(Token* at) {
    if (at->kind == KW_LET) {
        if (at[1].kind != IDENTIFIER || !specialise_assignment(at + 1)) return false;
        enter_generation(at + 1);
        at->execute = guarded<let_with_word>;
        return true;
    }
    if (is_system_variable(at->name)) return false;
    if (at[1].kind != '(') return specialise_scalar(at);
    if (is_word(at, "MID$")) return specialise_replacement(at);
    return !is_word(at, "TIMER") && specialise_array_element(at);
}

[[gnu::cold]] bool specialise_swap(Token* at) {
    Place first;
    Place second;
    if (!read_place(at + 1, first) || first.end->kind != ',' || !read_place(first.end + 1, second) ||
        first.type != second.type)
        return false;
    hold_place(at, first);
    hold_place(first.end, second);
    as<PlaceRecord>(at).next_place = first.end;
    as<PlaceRecord>(at).after = link_behind(at, second.end);
    at->execute = first.type == Type::STRING ? guarded<swap_places<true>> : guarded<swap_places<false>>;
    return true;
}

}  // namespace korvane::fast
