// Calls in expressions. Functions of reals are called as the steps call them, or are a few instructions;
// those that DEF FN has defined are part of the code, with their arguments in registers.
#include <cstdint>

#include "fast/function_steps.h"
#include "native/emitter.h"
#include "numbers/kernels.h"
#include "numbers/rounding.h"
#include "values/functions.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane::native {
namespace {

using fast::Domain;
using fast::Form;
using fast::none;

constexpr int most_calls = 12;  // of user functions in a statement

alignas(16) constexpr std::uint64_t sign_bit[2] = {1ULL << 63, 0};
alignas(16) constexpr std::uint64_t other_bits[2] = {~(1ULL << 63), ~0ULL};
constexpr double one = 1;

using RealFunction = double (*)(double);

// A function of a number that is part of the code, or called by it with the number.
struct Row {
    std::uint32_t name;     // of four characters at most (name_of())
    RealFunction function;  // null when it is part of the code
};

consteval Row row(const char* name, RealFunction function = nullptr) {
    return {static_cast<std::uint32_t>(name_number(name)), function};
}

constexpr Row rows[] = {row("ABS"),
                        row("INT"),
                        row("FIX"),
                        row("SQR"),
                        row("CINT"),
                        row("CDBL"),
                        row("CSNG"),
                        row("SIN", kernel_sin),
                        row("COS", kernel_cos),
                        row("TAN", kernel_tan),
                        row("ATN", kernel_atan),
                        row("EXP", kernel_exp),
                        row("LOG", kernel_log)};

const Row* find_row(std::uint64_t name) {
    for (const Row& row : rows)
        if (row.name == name) return &row;
    return nullptr;
}

std::int16_t first_value(const Node& call) {
    return node_at(call.first_argument).value;
}

}  // namespace

// Calls a function whose arguments are in the scratch registers, and leaves its result there. All values that
// are kept are saved around it, and variables loaded anew.
void Emitter::call(const void* function, int reals, int wholes) {
    begin_call(reals, wholes);
    code.emit(Operation::movaps, Vector::xmm0, scratch);
    code.emit(Operation::movaps, Vector::xmm1, other_scratch);
    end_call(function, reals, wholes);
}

void Emitter::begin_call(int reals, int wholes) {
    // The stack lies 8 bytes off the boundary that a call needs.
    const int slots = (reals + wholes) | 1;
    code.emit(WithNumber::sub, Register::rsp, 8 * slots);
    for (int i = 0; i != reals; ++i)
        code.emit(Operation::movsd_store, real_register(i), at(Register::rsp, 8 * i));
    for (int i = 0; i != wholes; ++i)
        code.emit(Operation::mov_store, whole_register(i), at(Register::rsp, 8 * (reals + i)));
}

void Emitter::end_call(const void* function, int reals, int wholes) {
    const int slots = (reals + wholes) | 1;
    code.call(function);
    code.emit(Operation::movaps, scratch, Vector::xmm0);
    for (int i = 0; i != reals; ++i)
        code.emit(Operation::movsd, real_register(i), at(Register::rsp, 8 * i));
    for (int i = 0; i != wholes; ++i)
        code.emit(Operation::mov, whole_register(i), at(Register::rsp, 8 * (reals + i)));
    code.emit(WithNumber::add, Register::rsp, 8 * slots);
    load_variables();
}

void Emitter::load_variables() {
    for (const KeptVariable& variable : variables_kept.all()) {
        load_real(variable.where, variable.type, place(variable.storage));
        find_whole(variable);
    }
}

// INT and FIX. What is whole already stays as it is, the sign of a zero too; so does what is beyond all
// integers.
void Emitter::round_down(Vector number, bool toward_zero) {
    Label done;
    Label is_less;
    code.emit(Operation::cvttsd2si, Register::rax, number);
    code.emit(WithNumber::cmp, Register::rax, 1);
    code.jump_if(Condition::overflow, done);
    whole_to_real(Register::rax, scratch);
    code.emit(Operation::ucomisd, scratch, number);
    code.jump_if(Condition::equal, done);
    if (toward_zero) {
        on(Operation::andps, number, sign_bit);
        code.emit(Operation::orps, number, scratch);
    } else {
        code.jump_if(Condition::below, is_less);
        on(Operation::subsd, scratch, &one);
        code.bind(is_less);
        code.emit(Operation::movaps, number, scratch);
    }
    code.bind(done);
}

void Emitter::real_call(const Node& node, int reals, int wholes) {
    const Vector target = real_register(reals);
    if (node.form == Form::user_call) {
        int above = reals;
        std::int16_t body;
        const std::size_t bound = binding_count;
        if (current->calls_users) return real_by_steps(node, reals, wholes);
        if (!enter_function(node, above, wholes, body)) return give_up();
        real(body, above, wholes);
        binding_count = bound;
        copy(target, real_register(above));
        if (node.domain == Domain::single) to_single(target);
        return;
    }
    const std::uint64_t name = name_of(node);
    const Row* row = find_row(name);
    if (row == nullptr) return real_by_steps(node, reals, wholes);
    real(first_value(node), reals, wholes);
    if (row->function != nullptr) {
        finite_or_fail(target);
        code.emit(Operation::movaps, scratch, target);
        call(reinterpret_cast<const void*>(row->function), reals, wholes);
        copy(target, scratch);
    } else if (name == name_number("SQR")) {
        code.emit(Operation::sqrtsd, target, target);
    } else if (name == name_number("ABS")) {
        on(Operation::andps, target, other_bits);
    } else if (name == name_number("INT") || name == name_number("FIX")) {
        round_down(target, name == name_number("FIX"));
    }
    if (node.domain == Domain::single) to_single(target);
}

void Emitter::whole_call(const Node& node, int reals, int wholes) {
    const Register target = whole_register(wholes);
    if (node.form == Form::user_call) {
        int above = reals;
        std::int16_t body;
        const std::size_t bound = binding_count;
        if (current->calls_users) return whole_by_steps(node, reals, wholes);
        if (!enter_function(node, above, wholes, body)) return give_up();
        whole(body, above, wholes);
        binding_count = bound;
        return;
    }
    const std::uint64_t name = name_of(node);
    const std::int16_t argument = first_value(node);
    if (name == name_number("LEN") || name == name_number("ASC")) {
        text(argument, reals, wholes);
        const Register length = whole_register(wholes + 1);
        code.emit(Operation::mov_32, length, length);
        if (name == name_number("LEN")) {
            code.emit(Operation::mov, target, length);
        } else {
            code.emit(Operation::test, length, length);
            fail_if(Condition::equal);
            code.emit(Operation::movzx_8, target, at(target, 0));
        }
        return;
    }
    if (name == name_number("SGN")) {
        const Vector number = real_register(reals);
        real(argument, reals, wholes);
        finite_or_fail(number);
        code.emit(Operation::xorps, scratch, scratch);
        code.emit(Operation::ucomisd, number, scratch);
        code.set_byte(Condition::above, Register::rax);
        code.set_byte(Condition::below, Register::rdx);
        code.emit(Operation::movzx_8, target, Register::rax);
        code.emit(Operation::movzx_8, Register::rdx, Register::rdx);
        code.emit(Operation::sub, target, Register::rdx);
        return;
    }
    if (find_row(name) == nullptr) return whole_by_steps(node, reals, wholes);
    whole(argument, reals, wholes);
    if (name != name_number("ABS")) return;
    Label positive;
    code.emit(Operation::test, target, target);
    code.jump_if(Condition::not_sign, positive);
    code.emit(Unary::neg, target);
    fail_if(Condition::overflow);
    code.bind(positive);
}

// What a variable is bound to as a parameter; null when it is none.
const Operand* Emitter::find_bound(const Node& variable) const {
    for (std::size_t i = binding_count; i != 0; --i)
        if (bindings[i - 1].storage == variable.storage) return &bindings[i - 1].value;
    return nullptr;
}

// Computes the arguments of a user function, which `reals` then counts among the values that are kept, and
// binds the parameters to them. The parameters' own variables stay as they are: nothing can look at them
// before the expression has been computed. As they are variables for all functions that the body calls in
// turn, the innermost binding counts, whichever function it belongs to.
bool Emitter::enter_function(const Node& call, int& reals, int wholes, std::int16_t& body) {
    UserFunction& function = *call.function;
    if (!function.has_steps || function.generation != arenas.generation || ++calls_entered > most_calls)
        return false;
    std::array<Binding, max_parameters> arguments;
    std::size_t count = 0;
    for (std::int16_t i = call.first_argument; i != none; i = node_at(i).next_argument, ++count) {
        const std::int16_t value = node_at(i).value;
        const VariableEntry* parameter = function.entries[count];
        const Type type = parameter->type;
        if (type == Type::INT64 || type == Type::STRING) return false;
        const Vector own = real_register(reals);
        Operand operand = own;
        if (is_integer(type)) {
            whole(value, reals, wholes);
            fit_or_fail(type, whole_register(wholes));
            whole_to_real(whole_register(wholes), own);
        } else {
            operand = real_operand(value, reals, wholes);
            if (!operand.is_register() || type == Type::SINGLE) {
                copy(own, operand);
                operand = own;
            }
            if (type == Type::SINGLE) to_single(own);
            const bool is_number = node_at(value).form == Form::literal && type == Type::DOUBLE;
            if (!is_number) finite_or_fail(static_cast<Vector>(operand.number()));
        }
        if (operand.is_register(own)) ++reals;
        arguments[count] = {parameter->storage, operand};
    }
    if (binding_count + count > bindings.size()) return false;
    for (std::size_t i = 0; i != count; ++i)
        bindings[binding_count++] = arguments[i];
    Token* at = function.body;
    body = fast::parse_expression(at, 1);
    return body != none && fast::plan(body, fast::domain_of(node_at(body).type));
}

}  // namespace korvane::native
