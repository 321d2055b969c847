// Assignments, IF, and jumps.
#include "fast/links.h"
#include "fast/number_types.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "native/emitter.h"
#include "native/state.h"
#include "program/keywords.h"
#include "run/conditions.h"
#include "run/control_stacks.h"
#include "values/variables.h"

namespace korvane::native {

using fast::as;
using fast::Form;

// ---- Assignments ----------------------------------------------------------------------------------

// Writes an integer that fits; it may be in any register but rax.
void Emitter::write_whole(Operand memory, Type type, Register number) {
    fit_or_fail(type, number);
    code.emit(type == Type::INTEGER ? Operation::mov_store_16
              : type == Type::LONG  ? Operation::mov_store_32
                                    : Operation::mov_store,
              number, memory);
}

void Emitter::fit_or_fail(Type type, Register number) {
    if (type == Type::INT64) return;
    const bool is_short = type == Type::INTEGER;
    code.emit(is_short ? Operation::movsx_16 : Operation::movsx_32, Register::rax, number);
    code.emit(Operation::cmp, Register::rax, number);
    fail_if(Condition::not_equal);
}

// Makes the first double what the type can hold; fails when it is none. Where nothing could fail before, the
// statement has not been counted, for that costs no jump of its own here. What is called may not be called
// twice: not all that PEEK reads is memory.
void Emitter::prepare_real(Type type, const Node& value, bool counting) {
    const bool is_copy = value.form == Form::literal ? type == Type::DOUBLE
                                                     : value.form == Form::variable && value.type == type;
    if (type == Type::SINGLE) to_single(real_register(0));
    if (is_copy) return;
    if (is_rehearsal && counting)
        current->counts_itself = !current->takes && !current->fail.is_used() && detour_count == 0;
    finite_or_fail(real_register(0), counting && current->counts_itself);
}

void Emitter::write_real(Operand memory, Type type) {
    if (type == Type::DOUBLE) {
        code.emit(Operation::movsd_store, real_register(0), memory);
        return;
    }
    code.emit(Operation::cvtsd2ss, scratch, real_register(0));
    code.emit(Operation::movss_store, scratch, memory);
}

void Emitter::write_scalar(const VariableEntry& variable, std::int16_t value) {
    use(variable.storage, variable.type, Region::Way::written);
    if (is_integer(variable.type)) {
        whole(value, 0, 0);
        write_whole(place(variable.storage), variable.type, whole_register(0));
        return;
    }
    // Where a variable in a register is the left side of a sum of reals, that is computed there: nothing else
    // is before the right side has been.
    const KeptVariable* kept = variables_kept.find(variable.storage);
    const Node& sum = node_at(value);
    const bool is_real = fast::domain_of_kind(sum.kind) != fast::Domain::whole;
    if (kept != nullptr && sum.form == Form::binary && is_real && node_at(sum.left).form == Form::variable &&
        node_at(sum.left).storage == variable.storage)
        first_real = kept->where;
    real(value, 0, 0);
    prepare_real(variable.type, node_at(value));
    write_real_variable(variable);
}

// The first number, which has been prepared for it.
void Emitter::write_real_variable(const VariableEntry& variable) {
    if (const KeptVariable* kept = variables_kept.find(variable.storage)) keep(*kept, real_register(0));
    write_real(place(variable.storage), variable.type);
}

// The element is found first where that can be noticed by what the two take.
void Emitter::write_element(const Node& target, std::int16_t value) {
    const int wholes = current->takes ? 1 : 0;
    const auto find = [&](int reals, int used) {
        return wholes != 0 ? at(whole_register(0), 0) : element(target, reals, used);
    };
    if (wholes != 0) code.emit(Operation::lea, whole_register(0), element(target, 0, 0));
    if (is_integer(target.type)) {
        whole(value, 0, wholes);
        write_whole(find(0, 1), target.type, whole_register(wholes));
        return;
    }
    real(value, 0, wholes);
    prepare_real(target.type, node_at(value));
    write_real(find(1, 0), target.type);
}

void Emitter::emit_assignment(Token* at) {
    Token* name = at->kind == KW_LET ? at + 1 : at;
    Token* equals = name + 1;
    fast::begin_statement();
    fast::Expression element;
    fast::Expression value;
    const VariableEntry* scalar = nullptr;
    if (equals->kind == '(') {
        if (!fast::read_element(name, element)) return give_up();
        equals = element.end;
    } else {
        scalar = find_variable(name->name, false);
        if (scalar == nullptr) return give_up();
    }
    const Type type = scalar != nullptr ? scalar->type : element.node().type;
    if (!fast::read_expression(equals + 1, fast::domain_of(type), value)) return give_up();
    Node taking = value.node();
    if (scalar == nullptr) taking.take_too(element.node());
    begin_taking(taking.allocates, taking.draws);
    if (type == Type::STRING)
        write_text(scalar != nullptr ? place(scalar->storage) : this->element(element.node(), 0, 0),
                   value.root);
    else if (scalar != nullptr)
        write_scalar(*scalar, value.root);
    else
        write_element(element.node(), value.root);
    go_on(as<fast::AssignmentRecord>(equals).after);
}

// ---- IF -------------------------------------------------------------------------------------------

// What the general handlers are told about the statement behind THEN (fast/conditions.cpp).
void Emitter::keep_then_part(const Token* opener, const Token* first, bool is_lone) {
    Label nested;
    const Operand kept = place(&execution.kept_token);
    load_token(Register::rax, opener);
    code.emit(Operation::cmp, Register::rax, kept);
    code.jump_if(Condition::equal, nested);
    on(Operation::mov_store, Register::rax, &execution.kept_start);
    code.bind(nested);
    load_token(Register::rax, first);
    code.emit(Operation::mov_store, Register::rax, kept);
    code.store_number_8(place(&execution.then_part), is_lone ? 0 : 1);
}

void Emitter::emit_if(Token* at) {
    const auto& record = as<fast::IfRecord>(at);
    fast::begin_statement();
    fast::Expression condition;
    if (!fast::read_expression(at + 1, fast::Domain::whole, condition)) return give_up();
    begin_taking(condition.node().allocates, condition.node().draws);
    const Token* then = condition.end;
    if (then->kind == KW_THEN || then->kind == KW_GOTO) ++then;
    const bool to_line = then->kind == NUMBER;
    const bool is_lone = (record.condition_kind & fast::IfRecord::lone_then_part) != 0;
    // The keyboard is not looked at inside a THEN part: where that may be due, the general handler sees to
    // it. As many statements as the part may take, of which there is one, are left in front of it.
    current->counts_itself = !to_line;
    if (!to_line) {
        code.emit(Unary::dec_32, Register::rbx);
        code.emit(WithNumber::cmp_32, Register::rbx, static_cast<std::int32_t>(record.most_statements));
        fail_if(Condition::below);
    }
    const Condition when_true = condition_of(condition.root);
    if (to_line || is_lone) end_then_part();
    if (to_line) {
        code.jump_if(when_true, branch_to(record.when_true));
        go_on_or_branch(record.when_false);
        return;
    }
    Token* first = record.when_true;
    if (is_lone) {
        // Only an assignment right behind THEN is sure to be reached through its IF alone.
        const bool is_assignment = first->kind == IDENTIFIER || first->kind == KW_LET;
        Place* place_of_first = nullptr;
        if (!is_rehearsal && is_assignment && first[-1].kind == KW_THEN) place_of_first = region.find(first);
        if (place_of_first != nullptr) place_of_first->opener = at;
        // Without code it is seldom reached, and what is stepped over would have to be fetched.
        if (place_of_first != nullptr && !place_of_first->is_native) {
            code.jump_if(when_true, lead_to(first));
            go_on_or_branch(record.when_false);
            return;
        }
        code.jump_if(opposite(when_true), branch_to(record.when_false));
        if (place_of_first == nullptr) keep_then_part(at, first, true);
        go_on(first);
        return;
    }
    Label otherwise;
    code.jump_if(opposite(when_true), otherwise);
    keep_then_part(at, first, false);
    code.jump(lead_to(first));
    code.bind(otherwise);
    end_then_part();
    go_on_or_branch(record.when_false);
}

// A branch of an IF may lead to a line that is not known yet, for which null stands.
Label& Emitter::branch_to(Token* at) {
    return at == nullptr ? current->branch : lead_to(at);
}

void Emitter::go_on_or_branch(Token* at) {
    if (at == nullptr)
        code.jump(current->branch);
    else
        go_on(at);
}

// An ELSE ends the THEN part in front of it; anywhere else it is an error.
void Emitter::emit_else(Token* at) {
    on(Operation::movzx_8, Register::rax, &execution.then_part);
    fail_if_no(Register::rax);
    go_on(fast::end_of_line(at));
}

// ---- GOSUB and RETURN -----------------------------------------------------------------------------

// The next free entry of a stack, which is not full, in rdx: counted from the first one's address.
void Emitter::find_top(const std::uint32_t& count, std::uint32_t most, int size) {
    on(Operation::mov_32, Register::rax, &count);
    code.emit(WithNumber::cmp_32, Register::rax, static_cast<std::int32_t>(most));
    fail_if(Condition::equal);
    code.multiply(Register::rdx, Register::rax, size);
}

Operand Emitter::field(const void* address, Register offset) {
    return place(address).with_index(offset, 0);
}

void Emitter::write_position(const Position& position, Operand memory) {
    code.load_number(Register::rax, position.line | std::uint64_t{position.record} << 32);
    code.emit(Operation::mov_store, Register::rax, memory);
}

void Emitter::emit_gosub(Token* at) {
    push_return(at);
    end_then_part();
    if (is_rehearsal) static_cast<void>(lead_to(as<fast::GosubRecord>(at).after));
    go_on(at[1].number.target);
}

// Stacks where the GOSUB at `at`, or that behind the ON, returns to.
void Emitter::push_return(const Token* at) {
    const auto& gosub = as<fast::GosubRecord>(at);
    GosubEntry& entry = control_stacks.gosubs[0];
    static_assert(__builtin_offsetof(GosubEntry, kind) % 4 == 0 &&
                  __builtin_offsetof(GosubEntry, timer) == __builtin_offsetof(GosubEntry, kind) + 1);
    find_top(control_stacks.gosub_count, max_gosub_depth, sizeof entry);
    write_position(gosub.own, field(&entry.line, Register::rdx));
    code.store_number_32(field(&entry.kind, Register::rdx), static_cast<std::uint32_t>(GosubKind::GOSUB));
    code.store_number_32(field(&entry.epoch, Register::rdx), program.cache_epoch);
    load_token(Register::rax, gosub.after);
    code.emit(Operation::mov_store, Register::rax, field(&entry.token, Register::rdx));
    code.emit(Unary::inc_32, place(&control_stacks.gosub_count));
}

// ON with a list of lines. One that is not known yet is for the general handler to find.
void Emitter::emit_on(Token* at) {
    const auto& on = as<fast::OnRecord>(at);
    fast::begin_statement();
    fast::Expression number;
    if (!fast::read_expression(at + 1, fast::Domain::whole, number)) return give_up();
    begin_taking(number.node().allocates, number.node().draws);
    whole(number.root, 0, 0);
    const Register chosen = whole_register(0);
    Label none_of_them;
    code.emit(WithNumber::cmp, chosen, 0);
    fail_if(Condition::less);
    code.emit(WithNumber::sub, chosen, 1);
    code.emit(WithNumber::cmp, chosen, on.count);
    code.jump_if(Condition::not_below, none_of_them);
    for (int i = 0; i != on.count; ++i) {
        if (fast::listed_line(on.lines + 2 * i) != nullptr) continue;
        code.emit(WithNumber::cmp, chosen, i);
        code.jump_if(Condition::equal, current->branch);
    }
    const bool is_gosub = on.lines[-1].kind == KW_GOSUB;
    if (is_gosub) push_return(at);
    end_then_part();
    for (int i = 0; i != on.count; ++i) {
        Token* target = fast::listed_line(on.lines + 2 * i);
        if (target == nullptr) continue;
        code.emit(WithNumber::cmp, chosen, i);
        code.jump_if(Condition::equal, lead_to(target));
    }
    code.bind(none_of_them);
    go_on(on.after);
}

// The last entry of a stack, as find_top().
void Emitter::find_last(const std::uint32_t& count, int size) {
    on(Operation::mov_32, Register::rax, &count);
    code.emit(WithNumber::sub, Register::rax, 1);
    fail_if(Condition::below);
    code.multiply(Register::rdx, Register::rax, size);
}

void Emitter::emit_return() {
    GosubEntry& entry = control_stacks.gosubs[0];
    find_last(control_stacks.gosub_count, sizeof entry);
    code.emit(Operation::movzx_8, Register::rcx, field(&entry.kind, Register::rdx));
    code.emit(WithNumber::cmp_32, Register::rcx, static_cast<std::int32_t>(GosubKind::GOSUB));
    fail_if(Condition::not_equal);
    code.emit(WithNumber::cmp_32, field(&entry.epoch, Register::rdx),
              static_cast<std::int32_t>(program.cache_epoch));
    fail_if(Condition::not_equal);
    code.emit(Operation::mov, Register::rdi, field(&entry.token, Register::rdx));
    on(Operation::mov_store_32, Register::rax, &control_stacks.gosub_count);
    end_then_part();
    lead_to_one(KW_GOSUB);
}

// Control goes on at the token in rdi: most often behind one of the statements of a kind, or at it. To look
// through many of them would take longer than to leave and come in again.
void Emitter::lead_to_one(std::uint8_t kind) {
    int most = 8;
    for (const Place* origin : region.natives()) {
        const bool is_on = kind == KW_GOSUB && origin->at->kind == KW_ON;
        if (is_rehearsal || (origin->at->kind != kind && !is_on) || --most < 0) continue;
        Token* target = kind == KW_GOSUB ? as<fast::GosubRecord>(origin->at).after : origin->at;
        compare_token(target);
        code.jump_if(Condition::equal, lead_to(target));
    }
    code.jump(leaving_anywhere);
}

// ---- SWAP and READ --------------------------------------------------------------------------------

// The address of a place in a register.
void Emitter::find_place(const fast::Place& target, int wholes) {
    const Operand memory =
        target.is_element ? element(target.element.node(), 0, wholes) : place(target.storage);
    code.emit(Operation::lea, whole_register(wholes), memory);
}

void Emitter::emit_swap(Token* at) {
    fast::begin_statement();
    fast::Place first;
    fast::Place second;
    if (!fast::read_place(at + 1, first) || !fast::read_place(first.end + 1, second)) return give_up();
    begin_taking((first.is_element && first.element.node().allocates) ||
                     (second.is_element && second.element.node().allocates),
                 false);
    find_place(first, 0);
    find_place(second, 1);
    const auto size = static_cast<int>(storage_size(first.type));
    const Operation load = size == 2 ? Operation::movsx_16 : size == 4 ? Operation::mov_32 : Operation::mov;
    const Operation store = size == 2   ? Operation::mov_store_16
                            : size == 4 ? Operation::mov_store_32
                                        : Operation::mov_store;
    for (int i = 0; i < size; i += 8) {
        const Operand one = korvane::native::at(whole_register(0), i);
        const Operand other = korvane::native::at(whole_register(1), i);
        code.emit(load, Register::rax, one);
        code.emit(load, Register::rdx, other);
        code.emit(store, Register::rax, other);
        code.emit(store, Register::rdx, one);
    }
    load_variables();
    go_on(as<fast::PlaceRecord>(at).after);
}

void Emitter::emit_read(Token* at) {
    begin_taking(true, false);
    load_token(whole_register(0), at);
    call_with(reinterpret_cast<const void*>(fast::read_items), 1, 0, 0);
    fail_if_no(Register::rax);
    go_on(as<fast::PlaceRecord>(at).after);
}

}  // namespace korvane::native
