// Arguments that are held by their first records (values/held_arguments.h).
#include "fast/expression.h"
#include "fast/sides.h"
#include "fast/text_sides.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "values/held_arguments.h"
#include "values/operator_strength.h"
#include "values/random.h"
#include "values/variables.h"

namespace korvane::fast {
namespace {

// What Token::argument.state tells. A held one's type stands in the lower bits; one that is refused keeps in
// `side` how many variables there were, modulo 256.
constexpr std::uint8_t met = 0x10;
constexpr std::uint8_t refused = 0x20;
constexpr std::uint8_t held = 0x40;

// Where an operand is missing may stand any record, also the first one of a statement.
bool begins_operand(const Token* at) {
    switch (at->kind) {
        case NUMBER:
        case STRING_LITERAL:
        case IDENTIFIER:
        case '(':
        case '+':
        case '-':
        case KW_NOT:
            return true;
        default:
            return false;
    }
}

// Makes the argument's steps, and its first record keep where they begin; false when it has none. The leaf in
// front of a chain is kept by the chain's first record, an operator whose left side the accumulator carries.
bool hold_argument(Token* first) {
    // A user function's body has steps of its own.
    if (record_of(first) >= max_token_records) return false;
    begin_statement();
    Token* end = first;
    const std::int16_t root = parse_expression(end, weakest_strength);
    if (root == none || !plan(root, domain_of(node_at(root).type))) return false;
    const Side side = emit(root);
    if (side.chain == nullptr) return false;
    if ((side.kind & leaf_mask) != COMPUTED) as<OperatorRecord>(side.chain).left_leaf = side.leaf;
    first->argument.side = side.kind;
    first->argument.chain = static_cast<std::uint8_t>(side.chain - first);
    first->argument.length = static_cast<std::uint8_t>(end - first);
    first->argument.state = held | static_cast<std::uint8_t>(node_at(root).type);
    return true;
}

void look_at_argument(Token* first) {
    auto& argument = first->argument;
    const auto seen = static_cast<std::uint8_t>(variables.count);
    if (argument.state == refused && argument.side == seen) return;
    if (hold_argument(first)) return;
    argument.state = refused;
    argument.side = seen;
}

// The value of a held argument; of type NONE when it failed.
Value held_value(Token* first) {
    const auto& argument = first->argument;
    Token* chain = first + argument.chain;
    const void* leaf = as<OperatorRecord>(chain).left_leaf;
    const auto type = static_cast<Type>(argument.state & ~held);
    if (type == Type::STRING) return text_side(argument.side, leaf, chain);
    if (is_integer(type)) {
        const Whole whole = whole_side(argument.side, leaf, chain);
        return Value::of_integer(whole.value, whole.failed != 0 ? Type::NONE : type);
    }
    const double real = real_side(argument.side, leaf, chain);
    return Value::of_real(real, is_finite(real) ? type : Type::NONE);
}

// The value of a held argument. One that fails starts again with what it found.
[[gnu::noinline]] Value evaluate_held(Cursor& cursor) {
    std::uint8_t* const string_top = arenas.FREETOP;
    const RandomState random = random_state;
    const Value value = held_value(cursor);
    if (!failed(value)) {
        cursor += cursor->argument.length;
        return value;
    }
    arenas.FREETOP = string_top;
    random_state = random;
    held_arguments.in_use = false;
    const Value general = evaluate_unheld(cursor);
    held_arguments.in_use = true;
    return general;
}

}  // namespace
}  // namespace korvane::fast

namespace korvane {

// No way from here to the general evaluator leaves a frame on the stack, so that an expression may be as deep
// as without the marks.
Value evaluate_argument(Cursor& cursor) {
    using namespace fast;
    Token* first = cursor;
    auto& argument = first->argument;
    const bool known = argument.state != 0 && argument.stamp == array_stamp();
    if (__builtin_expect(known, true)) {
        if (argument.state < held) look_at_argument(first);
        if (argument.state >= held) return evaluate_held(cursor);
    } else if (begins_operand(first)) {
        argument = {};
        argument.stamp = array_stamp();
        argument.state = met;
    }
    return evaluate_unheld(cursor);
}

}  // namespace korvane
