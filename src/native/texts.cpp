// Texts: what a node of that type is takes two registers for integers, where its bytes are and how many. The
// upper half of the second one may hold anything. In two registers a function takes a Value, and gives one.
#include "fast/records.h"
#include "fast/text_comparisons.h"
#include "fast/text_steps.h"
#include "native/emitter.h"
#include "values/relations.h"
#include "values/variables.h"

namespace korvane::native {
namespace {

using fast::Form;
using fast::none;

constexpr int length_to_bytes = __builtin_offsetof(StringDescriptor, bytes);

std::int16_t argument_of(const Node& call, int number) {
    std::int16_t index = call.first_argument;
    while (number-- != 0)
        index = node_at(index).next_argument;
    return index;
}

}  // namespace

void Emitter::text(std::int16_t index, int reals, int wholes) {
    const Node& node = node_at(index);
    if (has_failed || node.type != Type::STRING) return give_up();
    const Register bytes = whole_register(wholes);
    const Register length = whole_register(wholes + 1);
    switch (node.form) {
        case Form::literal:
            on(Operation::mov, bytes, &node.token->string.bytes);
            on(Operation::mov_32, length, &node.token->string.length);
            break;
        case Form::variable:
        case Form::element: {
            const bool is_variable = node.form == Form::variable;
            const Operand memory = is_variable ? place(node.storage) : element(node, reals, wholes);
            code.emit(Operation::mov_32, length, memory);
            code.emit(Operation::mov, bytes, memory.behind(length_to_bytes));
            break;
        }
        case Form::binary:
            text(node.left, reals, wholes);
            text(node.right, reals, wholes + 2);
            text_from_call(reinterpret_cast<const void*>(fast::join), 4, reals, wholes);
            break;
        default:
            text_by_function(node, reals, wholes);
    }
}

// Functions that cut texts have their arguments in registers; others take their own record.
void Emitter::text_by_function(const Node& node, int reals, int wholes) {
    const auto number = [&](int which, int place) {
        whole(node_at(argument_of(node, which)).value, reals, wholes + place);
    };
    const std::uint64_t name = name_of(node);
    const bool is_user = node.form == Form::user_call;
    if (!is_user && name == name_number("CHR$")) {
        number(0, 0);
        return text_from_call(reinterpret_cast<const void*>(fast::character_of), 1, reals, wholes);
    }
    const bool from_end = name == name_number("RIGHT$");
    if (is_user || (name != name_number("MID$") && name != name_number("LEFT$") && !from_end)) {
        if (binding_count != 0) return give_up();
        load_token(whole_register(wholes), node.token);
        const auto step = fast::as<fast::StepRecord>(node.token).function.text;
        return text_from_call(reinterpret_cast<const void*>(step), 1, reals, wholes);
    }
    text(node_at(node.first_argument).value, reals, wholes);
    if (from_end) {
        number(1, 2);
        return text_from_call(reinterpret_cast<const void*>(fast::end_of), 3, reals, wholes);
    }
    if (name == name_number("MID$")) {
        number(1, 2);
        if (argument_of(node, 2) == none)
            code.load_number(whole_register(wholes + 3), INT64_MAX);
        else
            number(2, 3);
    } else {
        code.load_number(whole_register(wholes + 2), 1);
        number(1, 3);
    }
    text_from_call(reinterpret_cast<const void*>(fast::middle_of), 4, reals, wholes);
}

// Calls what gives a Value of type NONE when it fails.
void Emitter::text_from_call(const void* function, int count, int reals, int wholes) {
    call_with(function, count, reals, wholes);
    const Register length = whole_register(wholes + 1);
    code.emit(Operation::mov, length, Register::rdx);
    code.shift(Shift::right, Register::rdx,
               8 * (__builtin_offsetof(Value, type) - __builtin_offsetof(Value, length)));
    fail_if_no(Register::rdx);
    code.emit(Operation::mov, whole_register(wholes), Register::rax);
}

Condition Emitter::compare_texts(const Node& relation, int reals, int wholes) {
    text(relation.left, reals, wholes);
    text(relation.right, reals, wholes + 2);
    call_with(reinterpret_cast<const void*>(fast::order_of_texts), 4, reals, wholes);
    const Token* operation = relation.token;
    code.emit(WithNumber::and_, Register::rax, read_relation(operation));
    return Condition::not_equal;
}

void Emitter::write_text(Operand memory, std::int16_t value) {
    code.emit(Operation::lea, whole_register(0), memory);
    const Node& node = node_at(value);
    if (node.form == Form::binary) {
        text(node.left, 0, 1);
        text(node.right, 0, 3);
        call_with(reinterpret_cast<const void*>(fast::assign_joined), 5, 0, 0);
    } else {
        text(value, 0, 1);
        call_with(reinterpret_cast<const void*>(fast::assign_copy), 3, 0, 0);
    }
    fail_if_no(Register::rax);
}

}  // namespace korvane::native
