// FOR and NEXT, WHILE and WEND.
#include "fast/number_types.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "native/emitter.h"
#include "native/state.h"
#include "program/keywords.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "values/variables.h"

namespace korvane::native {
namespace {

using fast::as;

}  // namespace

// ---- FOR and NEXT ---------------------------------------------------------------------------------

void Emitter::emit_for(Token* at) {
    load_token(Register::rdi, at);
    call(reinterpret_cast<const void*>(fast::open_loop), 0, 0);
    code.emit(Operation::movzx_8, Register::rax, Register::rax);
    code.emit(Operation::test, Register::rax, Register::rax);
    fail_if(Condition::equal);
    use(as<fast::ForRecord>(at).variable->storage, as<fast::ForRecord>(at).variable->type);
    go_on(as<fast::ForRecord>(at).after);
}

// The first statement of a loop's turns, past the end of the line with its FOR.
static Token* first_of_turn(Token* at) {
    const bool ends_line = at->kind == END_OF_LINE && at->line_end.next_line != nullptr;
    return ends_line ? at->line_end.next_line : at;
}

// A NEXT is made for the loop that it has been seen in last. That it is in this one is looked at when the
// loop is met for the first time (may_turn), which leaves its key in the loop's entry: nobody else leaves the
// same there.
void Emitter::emit_next(Token* at) {
    const auto& record = as<fast::NextRecord>(at);
    const ForEntry& entry = *record.entry;
    if (entry.quick_variable != record.variable || entry.generation != arenas.generation) return give_up();
    code.emit(WithNumber::cmp_32, place(&control_stacks.for_count), record.depth);
    fail_if(Condition::not_equal);
    Detour* detour = add_detour(Detour::verifying);
    if (detour == nullptr) return;
    detour->loop = first_of_turn(entry.loop_token);
    detour->key = is_rehearsal ? 1 : new_key();
    detour->sign = entry.step_sign;
    code.emit(WithNumber::cmp_32, place(&entry.turn_key), static_cast<std::int32_t>(detour->key));
    code.jump_if(Condition::not_equal, detour->start);
    code.bind(detour->back);
    use(entry.variable->storage, entry.variable_type);
    const Condition past =
        is_integer(entry.variable_type) ? emit_sum_of_wholes(entry) : emit_sum_of_reals(entry);
    Label done;
    code.jump_if(past, done);
    end_then_part();
    code.jump(lead_to(first_of_turn(entry.loop_token)));
    code.bind(done);
    code.emit(Unary::dec_32, place(&control_stacks.for_count));
    go_on(record.after);
}

void Emitter::emit_verifying(const Detour& detour) {
    load_token(Register::rdi, current->at);
    load_token(Register::rsi, detour.loop);
    code.load_number(Register::rdx, detour.key);
    code.load_number(Register::rcx, static_cast<std::uint32_t>(detour.sign));
    call(reinterpret_cast<const void*>(may_turn), 0, 0);
    code.emit(Operation::movzx_8, Register::rax, Register::rax);
    code.emit(Operation::test, Register::rax, Register::rax);
    fail_if(Condition::equal);
}

// Adds the step, and gives what tells whether the variable is past the limit.
Condition Emitter::emit_sum_of_reals(const ForEntry& entry) {
    const std::uint8_t* storage = entry.variable->storage;
    const KeptVariable* kept = variables_kept.find(storage);
    const Type type = entry.variable_type;
    if (kept != nullptr)
        code.emit(Operation::movapd, Vector::xmm0, kept->where);
    else if (type == Type::DOUBLE)
        code.emit(Operation::movsd, Vector::xmm0, place(storage));
    else
        code.emit(Operation::cvtss2sd, Vector::xmm0, place(storage));
    code.emit(Operation::addsd, Vector::xmm0, place(&entry.step_as_double));
    if (type == Type::SINGLE) to_single(Vector::xmm0);
    finite_or_fail(Vector::xmm0);
    if (kept != nullptr) code.emit(Operation::movapd, kept->where, Vector::xmm0);
    write_real(place(storage), type);
    code.emit(Operation::ucomisd, Vector::xmm0, place(&entry.limit_as_double));
    return entry.step_sign < 0 ? Condition::below : Condition::above;
}

Condition Emitter::emit_sum_of_wholes(const ForEntry& entry) {
    const std::uint8_t* storage = entry.variable->storage;
    const Type type = entry.variable_type;
    const Register sum = whole_register(0);
    code.emit(type == Type::INTEGER ? Operation::movsx_16
              : type == Type::LONG  ? Operation::movsx_32
                                    : Operation::mov,
              sum, place(storage));
    code.emit(Operation::add, sum, place(&entry.step.integer));
    fail_if(Condition::overflow);
    write_whole(place(storage), type, sum);
    code.emit(Operation::cmp, sum, place(&entry.limit.integer));
    return entry.step_sign < 0 ? Condition::less : Condition::greater;
}

// ---- WHILE and WEND -------------------------------------------------------------------------------

void Emitter::emit_while(Token* at) {
    fast::begin_statement();
    fast::Expression condition;
    if (!fast::read_expression(at + 1, fast::Domain::whole, condition) || condition.node().takes())
        return give_up();
    const auto& record = as<fast::WhileRecord>(at);
    Token* behind = nullptr;
    if (at->jump_known) behind = cached_statement({record.wend.line, record.wend.record + 1});
    const Condition when_true = condition_of(condition.root);
    Label is_true;
    code.jump_if(when_true, is_true);
    if (behind != nullptr) {
        end_then_part();
        code.jump(lead_to(behind));
    } else {
        code.emit(Unary::inc_32, place(&missed));
        code.jump(current->fail);
    }
    code.bind(is_true);
    WhileEntry& entry = control_stacks.whiles[0];
    find_top(control_stacks.while_count, max_while_depth, sizeof entry);
    write_position(record.own, field(&entry.start, Register::rdx));
    load_token(Register::rax, at);
    code.emit(Operation::mov_store, Register::rax, field(&entry.token, Register::rdx));
    code.store_number_32(field(&entry.epoch, Register::rdx), program.cache_epoch);
    code.emit(Unary::inc_32, place(&control_stacks.while_count));
    go_on(record.after);
}

void Emitter::emit_wend() {
    WhileEntry& entry = control_stacks.whiles[0];
    find_last(control_stacks.while_count, sizeof entry);
    code.emit(WithNumber::cmp_32, field(&entry.epoch, Register::rdx),
              static_cast<std::int32_t>(program.cache_epoch));
    fail_if(Condition::not_equal);
    code.emit(Operation::mov, Register::rdi, field(&entry.token, Register::rdx));
    code.emit(Operation::mov_store_32, Register::rax, place(&control_stacks.while_count));
    code.emit(Operation::xor_32, Register::rax, Register::rax);
    code.emit(Operation::mov_store, Register::rax, place(&execution.kept_token));
    end_then_part();
    lead_to_one(KW_WHILE);
}

}  // namespace korvane::native
