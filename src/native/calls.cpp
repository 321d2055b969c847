// What has no code of its own is called: the functions that the steps of specialised statements call too, and
// the steps themselves. Arguments and results are values in registers; variables in registers are read again
// behind each call (call()).
#include "fast/records.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "native/emitter.h"
#include "native/state.h"
#include "program/arenas.h"

namespace korvane::native {

using fast::Form;

// Calls a function with the last values for integers, so many of them from `wholes` on, as its arguments. Its
// result is left in rax and rdx, or in the scratch register.
void Emitter::call_with(const void* function, int count, int reals, int wholes) {
    constexpr Register arguments[] = {Register::rdi, Register::rsi, Register::rdx,
                                      Register::rcx, Register::r8,  Register::r9};
    begin_call(reals, wholes);
    // None of these is a value that has not been moved yet: both go by the same order.
    for (int i = 0; i != count; ++i)
        if (whole_register(wholes + i) != arguments[i])
            code.emit(Operation::mov, arguments[i], whole_register(wholes + i));
    end_call(function, reals, wholes);
}

// A part of an expression that has no code is computed as by the step that it is part of: by its own steps. A
// step goes on with the next one of its chain, which is not wanted here, so it gets a copy of its record.
void Emitter::call_side(const Node& node, const void* function, int reals, int wholes) {
    const bool is_leaf = node.form == Form::bare_call || node.form == Form::bare_user_call;
    // The parameters of a function that is part of the code are not in their variables.
    if (binding_count != 0 && node.form != Form::bare_call) return give_up();
    const void* leaf = is_leaf ? node.storage : &fast::no_leaf;
    code.load_number(whole_register(wholes), node.kind);
    code.load_number(whole_register(wholes + 1), reinterpret_cast<std::uint64_t>(leaf));
    if (!is_leaf) {
        Detour* detour = add_detour(Detour::Kind::record);
        if (detour == nullptr) return;
        detour->loop = node.token;
        code.load_address(whole_register(wholes + 2), detour->start);
    }
    call_with(function, is_leaf ? 2 : 3, reals, wholes);
}

void Emitter::put_record(const Token* at) {
    Token copy = *at;
    fast::as<fast::StepRecord>(&copy).next = nullptr;
    std::uint64_t words[sizeof copy / sizeof(std::uint64_t)];
    __builtin_memcpy(words, &copy, sizeof copy);
    for (const std::uint64_t word : words)
        code.put_64(word);
}

void Emitter::real_by_steps(const Node& node, int reals, int wholes) {
    call_side(node, reinterpret_cast<const void*>(fast::real_side), reals, wholes);
    copy(real_register(reals), scratch);
}

void Emitter::whole_by_steps(const Node& node, int reals, int wholes) {
    call_side(node, reinterpret_cast<const void*>(fast::whole_side), reals, wholes);
    code.emit(Operation::test, Register::rdx, Register::rdx);
    fail_if(Condition::not_equal);
    code.emit(Operation::mov, whole_register(wholes), Register::rax);
}

// The statement takes string space or draws random numbers, if one of the two does: what it finds is kept.
void Emitter::begin_taking(bool allocates, bool draws) {
    if (!allocates && !draws) return;
    current->takes = true;
    on(Operation::mov, Register::rax, &arenas.FREETOP);
    on(Operation::mov_store, Register::rax, &string_top);
    if (!draws) return;
    load_token(whole_register(0), current->at);
    call_with(reinterpret_cast<const void*>(begin_drawing), 1, 0, 0);
}

}  // namespace korvane::native
