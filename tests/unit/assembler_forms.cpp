#include "assembler_forms.h"

#include <array>

namespace korvane::test {
namespace {

using native::Condition;
using native::Operand;
using native::Operation;
using native::Register;
using native::Shift;
using native::Unary;
using native::Vector;
using native::WithNumber;

#define KORVANE_FORM(name) Operation::name, #name
constexpr std::array operations = {
    OperationForm{KORVANE_FORM(movsd), "movsd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(movsd_store), "movsd", Size::xmm, Size::xmm, Size::qword, true, true, true},
    OperationForm{KORVANE_FORM(movss), "movss", Size::xmm, Size::xmm, Size::dword, false, true, true},
    OperationForm{KORVANE_FORM(movss_store), "movss", Size::xmm, Size::xmm, Size::dword, true, true, true},
    OperationForm{KORVANE_FORM(movaps), "movaps", Size::xmm, Size::xmm, Size::xmm, false, true, true},
    OperationForm{KORVANE_FORM(addsd), "addsd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(mulsd), "mulsd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(subsd), "subsd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(divsd), "divsd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(sqrtsd), "sqrtsd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(ucomisd), "ucomisd", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(andps), "andps", Size::xmm, Size::xmm, Size::xmm, false, true, true},
    OperationForm{KORVANE_FORM(orps), "orps", Size::xmm, Size::xmm, Size::xmm, false, true, true},
    OperationForm{KORVANE_FORM(xorps), "xorps", Size::xmm, Size::xmm, Size::xmm, false, true, true},
    OperationForm{KORVANE_FORM(cvtsd2ss), "cvtsd2ss", Size::xmm, Size::xmm, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(cvtss2sd), "cvtss2sd", Size::xmm, Size::xmm, Size::dword, false, true, true},
    OperationForm{KORVANE_FORM(cvtsi2sd), "cvtsi2sd", Size::xmm, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(cvttsd2si), "cvttsd2si", Size::qword, Size::xmm, Size::qword, false, true,
                  true},
    OperationForm{KORVANE_FORM(movq_out), "movq", Size::xmm, Size::qword, Size::qword, true, true, false},
    OperationForm{KORVANE_FORM(movq_in), "movq", Size::xmm, Size::qword, Size::qword, false, true, false},
    OperationForm{KORVANE_FORM(mov), "mov", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(mov_store), "mov", Size::qword, Size::qword, Size::qword, true, true, true},
    OperationForm{KORVANE_FORM(add), "add", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(sub), "sub", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(cmp), "cmp", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(and_), "and", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(or_), "or", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(xor_), "xor", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(test), "test", Size::qword, Size::qword, Size::qword, true, true, true},
    OperationForm{KORVANE_FORM(imul), "imul", Size::qword, Size::qword, Size::qword, false, true, true},
    OperationForm{KORVANE_FORM(lea), "lea", Size::qword, Size::qword, Size::qword, false, false, true},
    OperationForm{KORVANE_FORM(movsx_16), "movsx", Size::qword, Size::word, Size::word, false, true, true},
    OperationForm{KORVANE_FORM(movsx_32), "movsxd", Size::qword, Size::dword, Size::dword, false, true, true},
    OperationForm{KORVANE_FORM(mov_32), "mov", Size::dword, Size::dword, Size::dword, false, true, true},
    OperationForm{KORVANE_FORM(mov_store_32), "mov", Size::dword, Size::dword, Size::dword, true, true, true},
    OperationForm{KORVANE_FORM(mov_store_16), "mov", Size::word, Size::word, Size::word, true, true, true},
    OperationForm{KORVANE_FORM(cmp_32), "cmp", Size::dword, Size::dword, Size::dword, false, true, true},
    OperationForm{KORVANE_FORM(movzx_8), "movzx", Size::dword, Size::byte, Size::byte, false, true, true},
};
#undef KORVANE_FORM

#define KORVANE_FORM(name) Unary::name, #name
constexpr std::array unaries = {
    UnaryForm{KORVANE_FORM(neg), "neg", Size::qword},    UnaryForm{KORVANE_FORM(not_), "not", Size::qword},
    UnaryForm{KORVANE_FORM(idiv), "idiv", Size::qword},  UnaryForm{KORVANE_FORM(div_32), "div", Size::dword},
    UnaryForm{KORVANE_FORM(inc_32), "inc", Size::dword}, UnaryForm{KORVANE_FORM(dec_32), "dec", Size::dword},
    UnaryForm{KORVANE_FORM(call), "call", Size::qword},  UnaryForm{KORVANE_FORM(jmp), "jmp", Size::qword},
};
#undef KORVANE_FORM

#define KORVANE_FORM(name) WithNumber::name, #name
constexpr std::array with_numbers = {
    NumberForm{KORVANE_FORM(add), "add", Size::qword},    NumberForm{KORVANE_FORM(or_), "or", Size::qword},
    NumberForm{KORVANE_FORM(and_), "and", Size::qword},   NumberForm{KORVANE_FORM(sub), "sub", Size::qword},
    NumberForm{KORVANE_FORM(xor_), "xor", Size::qword},   NumberForm{KORVANE_FORM(cmp), "cmp", Size::qword},
    NumberForm{KORVANE_FORM(cmp_32), "cmp", Size::dword},
};
#undef KORVANE_FORM

#define KORVANE_FORM(name) Condition::name, #name
constexpr std::array conditions = {
    ConditionForm{KORVANE_FORM(overflow), "o"},     ConditionForm{KORVANE_FORM(below), "b"},
    ConditionForm{KORVANE_FORM(not_below), "ae"},   ConditionForm{KORVANE_FORM(equal), "e"},
    ConditionForm{KORVANE_FORM(not_equal), "ne"},   ConditionForm{KORVANE_FORM(not_above), "be"},
    ConditionForm{KORVANE_FORM(above), "a"},        ConditionForm{KORVANE_FORM(parity), "p"},
    ConditionForm{KORVANE_FORM(not_sign), "ns"},    ConditionForm{KORVANE_FORM(not_parity), "np"},
    ConditionForm{KORVANE_FORM(less), "l"},         ConditionForm{KORVANE_FORM(not_less), "ge"},
    ConditionForm{KORVANE_FORM(not_greater), "le"}, ConditionForm{KORVANE_FORM(greater), "g"},
};
#undef KORVANE_FORM

std::string number_text(std::int64_t number) {
    return std::to_string(number);
}

std::string_view memory_name(Size size) {
    constexpr std::array<std::string_view, 5> names = {"BYTE", "WORD", "DWORD", "QWORD", "XMMWORD"};
    return names[static_cast<std::size_t>(size)];
}

bool fits_byte(std::int32_t number) {
    return number >= -128 && number <= 127;
}

}  // namespace

const std::span<const OperationForm> operation_forms = operations;
const std::span<const UnaryForm> unary_forms = unaries;
const std::span<const NumberForm> number_forms = with_numbers;
const std::span<const ConditionForm> condition_forms = conditions;

std::string register_name(Size size, unsigned number) {
    constexpr std::array<std::string_view, 8> old = {"ax", "cx", "dx", "bx", "sp", "bp", "si", "di"};
    constexpr std::array<std::string_view, 8> low = {"al", "cl", "dl", "bl", "spl", "bpl", "sil", "dil"};
    constexpr std::array<std::string_view, 4> endings = {"b", "w", "d", ""};
    if (size == Size::xmm) return "xmm" + std::to_string(number);
    if (number >= 8)
        return 'r' + std::to_string(number) + std::string(endings[static_cast<std::size_t>(size)]);
    if (size == Size::byte) return std::string(low[number]);
    const std::string name(old[number]);
    if (size == Size::word) return name;
    return (size == Size::dword ? 'e' : 'r') + name;
}

std::string operand_text(const Operand& operand, Size in_register, Size in_memory) {
    if (operand.is_register()) return register_name(in_register, operand.number());
    std::string text(memory_name(in_memory));
    text += " PTR [";
    text += register_name(Size::qword, operand.number());
    if (operand.index() != Operand::no_index)
        text +=
            " + " + register_name(Size::qword, operand.index()) + '*' + std::to_string(1 << operand.shift());
    if (operand.displacement() != 0) text += " + (" + number_text(operand.displacement()) + ')';
    return text + ']';
}

Instruction make_instruction(const OperationForm& form, unsigned first, const Operand& second) {
    const std::string source = operand_text(second, form.second, form.memory);
    const std::string reg = register_name(form.first, first);
    // Between registers there are two ways to write the same; the braces choose one.
    std::string text = second.is_register() ? (form.stores ? "{store} " : "{load} ") : "";
    text += std::string(form.mnemonic) + ' ' + (form.stores ? source + ", " + reg : reg + ", " + source);
    const auto encode = [=](native::Assembler& assembler) {
        if (form.first == Size::xmm)
            assembler.emit(form.operation, static_cast<Vector>(first), second);
        else
            assembler.emit(form.operation, static_cast<Register>(first), second);
    };
    return {encode, text};
}

Instruction make_instruction(const UnaryForm& form, const Operand& operand) {
    return {[=](native::Assembler& assembler) { assembler.emit(form.operation, operand); },
            std::string(form.mnemonic) + ' ' + operand_text(operand, form.size, form.size)};
}

Instruction make_instruction(const NumberForm& form, const Operand& operand, std::int32_t number) {
    const bool is_accumulator = operand.is_register() && operand.number() == 0;
    return {[=](native::Assembler& assembler) { assembler.emit(form.operation, operand, number); },
            std::string(form.mnemonic) + ' ' + operand_text(operand, form.size, form.size) + ", " +
                number_text(number),
            is_accumulator && !fits_byte(number)};
}

Operand random_operand(RandomBits& random) {
    const auto any_register = [&] { return static_cast<Register>(random.below(16)); };
    const auto any_distance = [&] {
        const std::int64_t bits = static_cast<std::int64_t>(random.bits()) >> (32 + random.below(32));
        return static_cast<std::int32_t>(random.below(4) == 0 ? 0 : bits);
    };
    switch (random.below(3)) {
        case 0:
            return any_register();
        case 1:
            return native::at(any_register(), any_distance());
        default: {
            Register index = Register::rsp;
            while (index == Register::rsp)
                index = any_register();
            return native::at(any_register(), index, random.below(4), any_distance());
        }
    }
}

Instruction random_instruction(RandomBits& random) {
    const auto pick = [&](const auto& forms) {
        return forms[static_cast<std::size_t>(random.below(static_cast<int>(forms.size())))];
    };
    const auto any_number = [&] {
        return static_cast<std::int32_t>(static_cast<std::int64_t>(random.bits()) >> (32 + random.below(32)));
    };
    const int kind = random.below(8);
    if (kind < 5) {
        const OperationForm& form = pick(operations);
        Operand second = random_operand(random);
        while (second.is_register() ? !form.in_registers : !form.in_memory)
            second = random_operand(random);
        return make_instruction(form, static_cast<unsigned>(random.below(16)), second);
    }
    if (kind < 6) return make_instruction(pick(unaries), random_operand(random));
    Instruction instruction = make_instruction(pick(with_numbers), random_operand(random), any_number());
    while (instruction.has_shorter_form)
        instruction = make_instruction(pick(with_numbers), random_operand(random), any_number());
    return instruction;
}

}  // namespace korvane::test
