// Numbers in registers. What a node's value is in which domain has been planned (fast/plan.cpp); here it is
// computed in the same order of magnitude: a SINGLE is kept as a double that a float could hold, and rounded
// to one behind each operation, which gives what arithmetic on floats gives.
//
// A computed number that is none ends in a failure sooner or later, whatever is done with it: so it may be
// one as soon as it is noticed.
#include <bit>

#include "fast/number_types.h"
#include "fast/sides.h"
#include "native/emitter.h"
#include "native/state.h"
#include "numbers/rounding.h"
#include "program/arenas.h"
#include "program/keywords.h"
#include "values/power.h"
#include "values/relations.h"
#include "values/variables.h"

namespace korvane::native {
namespace {

using fast::Domain;
using fast::Form;

bool is_whole(const Node& node) {
    return fast::domain_of_kind(node.kind) == Domain::whole;
}

bool is_leaf(const Node& node) {
    return node.form == Form::variable || node.form == Form::literal;
}

alignas(16) constexpr std::uint64_t sign_bits[2] = {1ULL << 63, 0};
alignas(16) constexpr std::uint64_t other_bits[2] = {~(1ULL << 63), ~0ULL};

}  // namespace

// ---- Registers ------------------------------------------------------------------------------------

Vector Emitter::real_register(int number) {
    constexpr int most = 7;
    if (number == 0) return first_real;
    if (number >= most) give_up();
    return static_cast<Vector>(number >= most ? 0 : number);
}

Register Emitter::whole_register(int number) {
    constexpr Register registers[] = {Register::rdi, Register::rsi, Register::rcx, Register::r8,
                                      Register::r9,  Register::r10, Register::r11};
    static_assert(std::size(registers) == most_whole_registers);
    const bool fits = number < most_whole_registers;
    if (is_rehearsal) region.note_whole_register(number);
    if (!fits) give_up();
    return registers[fits ? number : 0];
}

// A place in memory, by its distance from one of the registers that lead into the memory that programs use.
Operand Emitter::place(const void* address) {
    const auto where = reinterpret_cast<std::int64_t>(address);
    for (const Base& base : bases()) {
        const std::int64_t distance = where - static_cast<std::int64_t>(base.address);
        if (distance == static_cast<std::int32_t>(distance))
            return at(base.where, static_cast<std::int32_t>(distance));
    }
    give_up();
    return at(Register::rbp, 0);
}

// The number of a literal, in the first token of the region that has the same: each token is a line of the
// processor's cache, and a long program's lines come from far away.
Operand Emitter::literal(const Token* token) {
    const double* number = &token->number.as_double;
    for (std::size_t i = 0; i != literal_count; ++i)
        if (std::bit_cast<std::uint64_t>(*literals[i]) == std::bit_cast<std::uint64_t>(*number))
            return place(literals[i]);
    if (literal_count != literals.size()) literals[literal_count++] = number;
    return place(number);
}

void Emitter::on_place(std::uint32_t operation, const void* address) {
    code.emit(operation, place(address));
}

void Emitter::copy(Vector target, Operand source) {
    if (!source.is_register())
        code.emit(Operation::movsd, target, source);
    else if (!source.is_register(target))
        code.emit(Operation::movaps, target, source);
}

// A number from memory. What the register held the conversion of a float would wait for.
void Emitter::load_real(Vector target, Type type, Operand memory) {
    if (type == Type::SINGLE) code.emit(Operation::xorps, target, target);
    code.emit(type == Type::SINGLE ? Operation::cvtss2sd : Operation::movsd, target, memory);
}

void Emitter::load_whole(Register target, Type type, Operand memory) {
    code.emit(type == Type::INTEGER ? Operation::movsx_16
              : type == Type::LONG  ? Operation::movsx_32
                                    : Operation::mov,
              target, memory);
}

void Emitter::use(const void* storage, Type type, Region::Way way) {
    if (is_rehearsal) region.note_use(storage, type, way, *current);
}

// Puts a number into the register of the variable that has got it.
void Emitter::keep(const KeptVariable& variable, Vector number) {
    copy(variable.where, number);
    find_whole(variable);
}

void Emitter::find_whole(const KeptVariable& variable) {
    if (!variable.is_subscript()) return;
    Label is_whole;
    // The other scratch register may hold what a function has given.
    code.emit(Operation::cvttsd2si, variable.whole, variable.where);
    whole_to_real(variable.whole, other_scratch);
    code.emit(Operation::ucomisd, other_scratch, variable.where);
    code.jump_if(Condition::equal, is_whole);
    code.load_number(variable.whole, no_number);
    code.bind(is_whole);
}

void Emitter::to_single(Vector number) {
    code.emit(Operation::cvtsd2ss, number, number);
    code.emit(Operation::cvtss2sd, number, number);
}

// The register is emptied first: the conversion would wait for what it held.
void Emitter::whole_to_real(Register number, Vector target) {
    code.emit(Operation::xorps, target, target);
    code.emit(Operation::cvtsi2sd, target, number);
}

// ---- Failures -------------------------------------------------------------------------------------

// With one jump for both: also counts the statement, and fails when it is none of those that are left.
void Emitter::finite_or_fail(Vector number, bool counting) {
    code.emit(Operation::movq_out, number, Register::rax);
    code.emit(Operation::add, Register::rax, Register::rax);
    code.emit(Operation::cmp, Register::r12, Register::rax);
    if (counting) code.emit(Unary::dec_32, Register::rbx);  // the carry stays
    fail_if(counting ? Condition::not_above : Condition::below);
}

void Emitter::fail_if_no(Register truth) {
    code.test_byte(truth);
    fail_if(Condition::equal);
}

// Fails when a double may not be the integer that it stands for (fast/comparison_steps.cpp). What is no
// number passes: the comparison itself finds that.
void Emitter::exact_or_fail(Vector number) {
    code.emit(Operation::movaps, scratch, number);
    on(Operation::andps, scratch, other_bits);
    on(Operation::ucomisd, scratch, &fast::exact_integers);
    fail_if(Condition::above);
}

// The nearest integer: nearly always the number is one already.
void Emitter::round_to_whole(Vector number, Register target) {
    code.emit(Operation::cvttsd2si, target, number);
    whole_to_real(target, scratch);
    code.emit(Operation::ucomisd, scratch, number);
    Detour* detour = add_detour(Detour::Kind::rounding);
    if (detour == nullptr) return;
    detour->number = number;
    detour->target = target;
    code.jump_if(Condition::parity, detour->start);
    code.jump_if(Condition::not_equal, detour->start);
    code.bind(detour->back);
}

// ---- Reals ----------------------------------------------------------------------------------------

// A floating variable in its register or, if it is a DOUBLE, in memory; any other in the next register.
Operand Emitter::variable_operand(const Node& node, int reals) {
    if (const Operand* bound = find_bound(node)) return *bound;
    if (const KeptVariable* kept = variables_kept.find(node.storage)) return kept->where;
    use(node.storage, node.type);
    const Operand memory = place(node.storage);
    if (node.type == Type::DOUBLE) return memory;
    const Vector target = real_register(reals);
    if (node.type == Type::SINGLE) {
        load_real(target, node.type, memory);
    } else {
        if (!is_integer(node.type)) give_up();
        load_whole(Register::rax, node.type, memory);
        whole_to_real(Register::rax, target);
    }
    return target;
}

Operand Emitter::real_operand(std::int16_t index, int reals, int wholes) {
    const Node& node = node_at(index);
    if (node.form == Form::variable) return variable_operand(node, reals);
    if (node.form == Form::literal && node.type != Type::STRING) return literal(node.token);
    if (node.form == Form::element && node.type == Type::DOUBLE) return element(node, reals, wholes);
    real(index, reals, wholes);
    return real_register(reals);
}

void Emitter::real(std::int16_t index, int reals, int wholes) {
    const Node& node = node_at(index);
    const Vector target = real_register(reals);
    // A text, the argument of VAL for example, is no number.
    if (has_failed || node.type == Type::STRING) return give_up();
    if (!is_leaf(node) && node.form != Form::element && is_whole(node)) {
        whole(index, reals, wholes);
        whole_to_real(whole_register(wholes), target);
        return;
    }
    switch (node.form) {
        case Form::variable:
        case Form::literal:
            copy(target, real_operand(index, reals, wholes));
            break;
        case Form::binary:
            real_binary(node, reals, wholes);
            break;
        case Form::sign:
            real(node.right, reals, wholes);
            on(Operation::xorps, target, sign_bits);
            break;
        case Form::element:
            if (is_floating(node.type)) {
                load_real(target, node.type, element(node, reals, wholes));
            } else {
                whole(index, reals, wholes);
                whole_to_real(whole_register(wholes), target);
            }
            break;
        case Form::call:
        case Form::user_call:
            real_call(node, reals, wholes);
            break;
        default:
            real_by_steps(node, reals, wholes);
    }
}

void Emitter::real_binary(const Node& node, int reals, int wholes) {
    if (node.token->kind == '^') {
        real_power(node, reals, wholes);
        return;
    }
    const Vector target = real_register(reals);
    real(node.left, reals, wholes);
    Operand right = real_operand(node.right, reals + 1, wholes);
    switch (node.token->kind) {
        case '+':
            code.emit(Operation::addsd, target, right);
            break;
        case '-':
            code.emit(Operation::subsd, target, right);
            break;
        case '*':
            code.emit(Operation::mulsd, target, right);
            break;
        case '/':
            // An infinite divisor would give a result that looks like a number.
            if (node_at(node.right).form != Form::literal) {
                if (!right.is_register()) {
                    copy(scratch, right);
                    right = scratch;
                }
                finite_or_fail(static_cast<Vector>(right.number()));
            }
            code.emit(Operation::divsd, target, right);
            break;
        default:
            give_up();
    }
    if (node.domain == Domain::single) to_single(target);
}

void Emitter::real_power(const Node& node, int reals, int wholes) {
    real(node.left, reals, wholes);
    real(node.right, reals + 1, wholes);
    const Vector left = real_register(reals);
    const Vector right = real_register(reals + 1);
    finite_or_fail(left);
    finite_or_fail(right);
    code.emit(Operation::movaps, scratch, left);
    code.emit(Operation::movaps, other_scratch, right);
    call(reinterpret_cast<const void*>(power_or_nan), reals, wholes);
    copy(left, scratch);
}

// ---- Integers -------------------------------------------------------------------------------------

void Emitter::whole(std::int16_t index, int reals, int wholes) {
    const Node& node = node_at(index);
    const Register target = whole_register(wholes);
    if (has_failed) return;
    if (node.form == Form::literal && node.type != Type::STRING) {
        std::int64_t number = node.token->number.integer;
        if (!is_integer(node.type) && !nearest_integer(node.token->number.as_double, number)) give_up();
        code.load_number(target, static_cast<std::uint64_t>(number));
        return;
    }
    const bool is_integer_element = node.form == Form::element && is_integer(node.type);
    if (!is_whole(node) && !is_integer_element) {
        const Operand number = real_operand(index, reals, wholes);
        const bool in_register = number.is_register();
        const Vector where = in_register ? static_cast<Vector>(number.number()) : real_register(reals);
        if (!in_register) copy(where, number);
        round_to_whole(where, target);
        return;
    }
    switch (node.form) {
        case Form::variable:
        case Form::element: {
            if (const Operand* bound = node.form == Form::variable ? find_bound(node) : nullptr) {
                code.emit(Operation::cvttsd2si, target, *bound);
                return;
            }
            if (node.form == Form::variable) use(node.storage, node.type);
            const bool is_variable = node.form == Form::variable;
            const Operand memory = is_variable ? place(node.storage) : element(node, reals, wholes);
            load_whole(target, node.type, memory);
            break;
        }
        case Form::binary:
            whole_binary(node, reals, wholes);
            break;
        case Form::relation: {
            const Condition condition = compare(node, reals, wholes);
            code.set_byte(condition, Register::rax);
            code.emit(Operation::movzx_8, target, Register::rax);
            code.emit(Unary::neg, target);
            break;
        }
        case Form::sign:
            whole(node.right, reals, wholes);
            code.emit(Unary::neg, target);
            fail_if(Condition::overflow);
            break;
        case Form::complement:
            whole(node.right, reals, wholes);
            code.emit(Unary::not_, target);
            break;
        case Form::call:
        case Form::user_call:
            whole_call(node, reals, wholes);
            break;
        default:
            whole_by_steps(node, reals, wholes);
    }
}

void Emitter::divide(bool remainder, Register left, Register right) {
    // By 0 is an error.
    code.emit(Operation::test, right, right);
    fail_if(Condition::equal);
    // Most numbers fit in 32 bits, and processors divide those much faster.
    Label long_one;
    Label usual;
    Label done;
    Label negated;
    code.emit(Operation::mov, Register::rdx, left);
    code.emit(Operation::or_, Register::rdx, right);
    code.emit(Operation::mov, Register::rax, left);
    code.shift(Shift::right, Register::rdx, 32);
    code.jump_if(Condition::not_equal, long_one);
    code.emit(Unary::div_32, right);
    code.jump(done);
    code.bind(long_one);
    // By -1 it may overflow, and needs no division.
    code.emit(WithNumber::cmp, right, -1);
    code.jump_if(Condition::not_equal, usual);
    code.emit(Unary::neg, left);
    fail_if(Condition::overflow);
    if (remainder) code.emit(Operation::xor_, left, left);
    code.jump(negated);
    code.bind(usual);
    code.sign_extend_rax();
    code.emit(Unary::idiv, right);
    code.bind(done);
    code.emit(Operation::mov, left, remainder ? Register::rdx : Register::rax);
    code.bind(negated);
}

void Emitter::whole_binary(const Node& node, int reals, int wholes) {
    whole(node.left, reals, wholes);
    whole(node.right, reals, wholes + 1);
    const Register left = whole_register(wholes);
    const Register right = whole_register(wholes + 1);
    switch (node.token->kind) {
        case '+':
            code.emit(Operation::add, left, right);
            fail_if(Condition::overflow);
            break;
        case '-':
            code.emit(Operation::sub, left, right);
            fail_if(Condition::overflow);
            break;
        case '*':
            code.emit(Operation::imul, left, right);
            fail_if(Condition::overflow);
            break;
        case '\\':
            divide(false, left, right);
            break;
        case KW_MOD:
            divide(true, left, right);
            break;
        case KW_AND:
            code.emit(Operation::and_, left, right);
            break;
        case KW_OR:
            code.emit(Operation::or_, left, right);
            break;
        case KW_XOR:
            code.emit(Operation::xor_, left, right);
            break;
        case KW_EQV:
            code.emit(Operation::xor_, left, right);
            code.emit(Unary::not_, left);
            break;
        case KW_IMP:
            code.emit(Unary::not_, left);
            code.emit(Operation::or_, left, right);
            break;
        default:
            give_up();
    }
}

// ---- Comparisons ----------------------------------------------------------------------------------

// Compares, and gives what tells whether the relation is true.
Condition Emitter::compare(const Node& relation, int reals, int wholes) {
    const Token* operation = relation.token;
    const std::uint8_t mask = read_relation(operation);
    const Node& left = node_at(relation.left);
    const Node& right = node_at(relation.right);
    if (relation.domain == Domain::text) return compare_texts(relation, reals, wholes);
    if (relation.domain == Domain::whole) {
        whole(relation.left, reals, wholes);
        whole(relation.right, reals, wholes + 1);
        code.emit(Operation::cmp, whole_register(wholes), whole_register(wholes + 1));
        constexpr Condition conditions[] = {Condition::less,    Condition::equal,     Condition::not_greater,
                                            Condition::greater, Condition::not_equal, Condition::not_less};
        return conditions[mask - 1];
    }
    // Variables of the domain's own type may be infinite, as they are compared with no look at that.
    const bool plain = relation.domain == Domain::single ||
                       (fast::is_plain<double>(left.kind) && fast::is_plain<double>(right.kind));
    Operand first = real_operand(relation.left, reals, wholes);
    if (!first.is_register()) {
        copy(real_register(reals), first);
        first = real_register(reals);
    }
    const auto number = static_cast<Vector>(first.number());
    Operand second = real_operand(relation.right, reals + 1, wholes);
    const auto check = [&](const Node& side, Operand where) {
        if (relation.with_care)
            exact_or_fail(static_cast<Vector>(where.number()));
        else if (!(plain && is_leaf(side)) && side.form != Form::literal)
            finite_or_fail(static_cast<Vector>(where.number()));
    };
    check(left, number);
    const bool is_checked = relation.with_care || (!(plain && is_leaf(right)) && right.form != Form::literal);
    if (is_checked && !second.is_register()) {
        copy(real_register(reals + 1), second);
        second = real_register(reals + 1);
    }
    check(right, second);
    code.emit(Operation::ucomisd, number, second);
    fail_if(Condition::parity);
    constexpr Condition conditions[] = {Condition::below, Condition::equal,     Condition::not_above,
                                        Condition::above, Condition::not_equal, Condition::not_below};
    return conditions[mask - 1];
}

// The condition of an IF or WHILE: gives what tells whether it is true.
Condition Emitter::condition_of(std::int16_t index) {
    const Node& node = node_at(index);
    if (node.form == Form::relation) return compare(node, 0, 0);
    if (is_whole(node)) {
        whole(index, 0, 0);
        code.emit(Operation::test, whole_register(0), whole_register(0));
        return Condition::not_equal;
    }
    real(index, 0, 0);
    finite_or_fail(Vector::xmm0);
    code.emit(Operation::xorps, scratch, scratch);
    code.emit(Operation::ucomisd, Vector::xmm0, scratch);
    return Condition::not_equal;
}

}  // namespace korvane::native
