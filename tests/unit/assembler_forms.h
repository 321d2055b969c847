// All forms of the instructions that native/assembler.h encodes, each with its text for the assembler of
// binutils, in the syntax of Intel's manuals without prefixes.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "native/assembler.h"
#include "random_bits.h"

namespace korvane::test {

// What an operand is: a register of a size, and what lies in memory in its place.
enum class Size { byte, word, dword, qword, xmm };

// One row for each enumerator; `name` is the enumerator's.
struct OperationForm {
    native::Operation operation;
    std::string_view name;
    std::string_view mnemonic;
    Size first;         // always a register
    Size second;        // the register
    Size memory;        // what is in memory in the place of the second
    bool stores;        // the second operand is written first
    bool in_registers;  // has a form with two registers
    bool in_memory;     // has one with a place in memory
};
struct UnaryForm {
    native::Unary operation;
    std::string_view name;
    std::string_view mnemonic;
    Size size;
};
struct NumberForm {
    native::WithNumber operation;
    std::string_view name;
    std::string_view mnemonic;
    Size size;
};
struct ConditionForm {
    native::Condition condition;
    std::string_view name;
    std::string_view suffix;
};
extern const std::span<const OperationForm> operation_forms;
extern const std::span<const UnaryForm> unary_forms;
extern const std::span<const NumberForm> number_forms;
extern const std::span<const ConditionForm> condition_forms;

// An instruction: how it is encoded, and how it is written.
struct Instruction {
    std::function<void(native::Assembler&)> encode;
    std::string text;
    // The other assembler has a shorter way to write the same down.
    bool has_shorter_form = false;
};

std::string register_name(Size size, unsigned number);
std::string operand_text(const native::Operand& operand, Size in_register, Size in_memory);

Instruction make_instruction(const OperationForm& form, unsigned first, const native::Operand& second);
Instruction make_instruction(const UnaryForm& form, const native::Operand& operand);
Instruction make_instruction(const NumberForm& form, const native::Operand& operand, std::int32_t number);

// Any instruction but a jump, with any operands.
Instruction random_instruction(RandomBits& random);
native::Operand random_operand(RandomBits& random);

}  // namespace korvane::test
