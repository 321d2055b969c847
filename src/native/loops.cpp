// FOR and NEXT, WHILE and WEND.
#include "fast/links.h"
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

// The first statement of a loop's turns, past the end of the line with its FOR.
static Token* first_of_turn(Token* at) {
    const bool ends_line = at->kind == END_OF_LINE && at->line_end.next_line != nullptr;
    return ends_line ? at->line_end.next_line : at;
}

// The FOR of a NEXT in the text of the program, as far as the lines between them are in the token cache; else
// null.
static Token* find_for(Token* at) {
    constexpr int farthest = 1000;  // records
    std::uint32_t line = as<fast::EndRecord>(fast::end_of_line(at)).line;
    int open = 0;
    for (int i = 0; i != farthest; ++i) {
        if (at->kind == KW_NEXT) ++open;
        if (at->kind == KW_FOR && --open == 0) return at;
        const bool is_direct = line == direct_line;
        if (at != (is_direct ? execution_buffer.direct : program.lines[line].tokens)) {
            --at;
            continue;
        }
        if (is_direct || line == 0 || program.lines[--line].tokens == nullptr) return nullptr;
        at = fast::end_of_line(program.lines[line].tokens);
    }
    return nullptr;
}

// Which way the step of a loop goes, where that is plain; else as it went last.
static std::int32_t sign_of_step(const Token* opener, const ForEntry& entry) {
    const Token* step =
        opener == nullptr ? nullptr : as<fast::BoundRecord>(as<fast::ForRecord>(opener).to).step;
    if (opener != nullptr && step == nullptr) return 1;
    if (step == nullptr) return entry.step_sign;
    if (step[1].kind == NUMBER && step[1].number.as_double > 0) return 1;
    return step[1].kind == '-' && step[2].kind == NUMBER && step[2].number.as_double > 0 ? -1
                                                                                         : entry.step_sign;
}

// The way that the step of a FOR always goes, which is a number or none at all; 0 where it may be any.
static std::int32_t plain_step(const Token* step) {
    if (step == nullptr) return 1;
    const bool is_negative = step[1].kind == '-';
    const Token* number = is_negative ? step + 2 : step + 1;
    const bool is_all = number[1].kind == END_OF_LINE || number[1].kind == ':';
    if (number->kind != NUMBER || !is_all || !(number->number.as_double > 0)) return 0;
    return is_negative ? -1 : 1;
}

void Emitter::call_or_fail(const void* function) {
    call(function, 0, 0);
    fail_if_no(Register::rax);
}

void Emitter::emit_for(Token* at) {
    const auto& loop = as<fast::ForRecord>(at);
    use(loop.variable->storage, loop.variable->type, Region::Way::written);
    Place* closer = nullptr;
    for (Place* place : region.natives())
        if (place->loop == at) closer = place;
    if (is_rehearsal) {
        current->has_bounds = emit_opening(at, nullptr) && !has_failed;
        has_failed = false;
    } else if (current->has_bounds && closer != nullptr) {
        emit_opening(at, closer);
        return;
    }
    load_token(Register::rdi, at);
    call_or_fail(reinterpret_cast<const void*>(fast::open_loop));
    go_on(loop.after);
}

// Reads the bounds of a FOR; false when there is no code for them. A limit that a double may not hold is
// compared as what it is.
bool Emitter::read_bounds(Token* at, Bounds& bounds) {
    const auto& loop = as<fast::ForRecord>(at);
    bounds.sign = plain_step(as<fast::BoundRecord>(loop.to).step);
    fast::begin_statement();
    if (bounds.sign == 0 || !fast::read_expression(at + 3, fast::Domain::whole, bounds.start) ||
        !fast::read_expression(loop.to + 1, fast::Domain::whole, bounds.limit))
        return false;
    const Node& limit = bounds.limit.node();
    bounds.is_real = is_floating(loop.variable->type);
    bounds.has_whole_limit = is_integer(limit.type);
    return bounds.is_real ? !bounds.has_whole_limit || limit.bound <= fast::exact_integers
                          : bounds.has_whole_limit;
}

// Computes the bounds: the start into the first register of the variable's domain, the limit into xmm1 and,
// when it is an integer, into the register behind that of the start. Gives what tells that there is no turn.
Condition Emitter::emit_bounds(const Bounds& bounds, Type type) {
    const int wholes = bounds.is_real ? 0 : 1;
    if (bounds.is_real) {
        real(bounds.start.root, 0, 0);
        prepare_real(type, bounds.start.node(), false);
    } else {
        whole(bounds.start.root, 0, 0);
    }
    if (bounds.has_whole_limit) {
        whole(bounds.limit.root, 1, wholes);
        whole_to_real(whole_register(wholes), Vector::xmm1);
    } else {
        real(bounds.limit.root, 1, 0);
        finite_or_fail(Vector::xmm1);
    }
    if (!bounds.is_real) {
        code.emit(Operation::cmp, whole_register(0), whole_register(1));
        return bounds.sign < 0 ? Condition::less : Condition::greater;
    }
    code.emit(Operation::ucomisd, Vector::xmm0, Vector::xmm1);
    fail_if(Condition::parity);
    return bounds.sign < 0 ? Condition::below : Condition::above;
}

// The entry that the NEXT at `closer` was made for keeps its key from one opening of the loop to the next, if
// nobody else has opened one there. Then it is as this FOR has left it: all that may be new are the variable
// and the limit. Where it is not, or at another depth, the loop is opened as the specialised FOR does it.
// False when there is no code for the bounds; in a rehearsal there is no NEXT yet.
bool Emitter::emit_opening(Token* at, Place* closer) {
    const auto& loop = as<fast::ForRecord>(at);
    const VariableEntry& variable = *loop.variable;
    Bounds bounds;
    if (!read_bounds(at, bounds)) return false;
    if (closer == nullptr) {
        emit_bounds(bounds, variable.type);
        return true;
    }
    const auto& turn = as<fast::NextRecord>(closer->at);
    const ForEntry& entry = *turn.entry;
    Detour* detour = add_detour(Detour::Kind::opening);
    if (detour == nullptr) return false;
    code.emit(WithNumber::cmp_32, place(&control_stacks.for_count), turn.depth - 1);
    code.jump_if(Condition::not_equal, detour->start);
    const Condition past = emit_bounds(bounds, variable.type);
    Label has_turns;
    code.jump_if(opposite(past), has_turns);
    write_loop_variable(variable);
    if (fast::end_of_line(at) != fast::end_of_line(closer->at)) end_then_part();
    code.jump(lead_to(turn.after));
    code.bind(has_turns);
    code.emit(WithNumber::cmp_32, place(&entry.turn_key), static_cast<std::int32_t>(key_of(*closer)));
    code.jump_if(Condition::not_equal, detour->start);
    write_loop_variable(variable);
    if (bounds.has_whole_limit)
        on(Operation::mov_store, whole_register(bounds.is_real ? 0 : 1), &entry.limit.integer);
    else
        on(Operation::movsd_store, Vector::xmm1, &entry.limit.real);
    on(Operation::movsd_store, Vector::xmm1, &entry.limit_as_double);
    code.emit(Unary::inc_32, place(&control_stacks.for_count));
    code.bind(detour->back);
    go_on(loop.after);
    return true;
}

// The number in the first register, which has been prepared for it, or found to be whole.
void Emitter::write_loop_variable(const VariableEntry& variable) {
    if (is_floating(variable.type))
        write_real_variable(variable);
    else
        write_whole(place(variable.storage), variable.type, whole_register(0));
}

std::uint32_t Emitter::key_of(Place& closer) {
    if (closer.key == 0) closer.key = new_key();
    return closer.key;
}

// A NEXT is made for the loop that stands around it, or that it was last seen in. That it is in this one is
// looked at when the loop is met for the first time (may_turn), which leaves its key in the loop's entry:
// nobody else leaves the same there.
void Emitter::emit_next(Token* at) {
    const auto& record = as<fast::NextRecord>(at);
    const ForEntry& entry = *record.entry;
    Token* opener = find_for(at);
    if (opener != nullptr && (!fast::is_current(opener) || !fast::has_own_form(opener) ||
                              as<fast::ForRecord>(opener).variable != record.variable))
        opener = nullptr;
    const bool is_seen = entry.quick_variable == record.variable && entry.generation == arenas.generation;
    if (opener == nullptr && !is_seen) return give_up();
    current->loop = opener;
    Token* first = first_of_turn(opener != nullptr ? as<fast::ForRecord>(opener).after : entry.loop_token);
    code.emit(WithNumber::cmp_32, place(&control_stacks.for_count), record.depth);
    fail_if(Condition::not_equal);
    Detour* detour = add_detour(Detour::Kind::verifying);
    if (detour == nullptr) return;
    detour->loop = first;
    detour->sign = sign_of_step(opener, entry);
    code.emit(WithNumber::cmp_32, place(&entry.turn_key),
              is_rehearsal ? 1 : static_cast<std::int32_t>(key_of(*current)));
    code.jump_if(Condition::not_equal, detour->start);
    code.bind(detour->back);
    const VariableEntry& variable = *record.variable;
    use(variable.storage, variable.type, Region::Way::written);
    const Condition past = is_integer(variable.type) ? emit_sum_of_wholes(entry, variable, detour->sign)
                                                     : emit_sum_of_reals(entry, variable, detour->sign);
    Label done;
    code.jump_if(past, done);
    end_then_part();
    code.jump(lead_to(first));
    code.bind(done);
    code.emit(Unary::dec_32, place(&control_stacks.for_count));
    go_on(record.after);
}

void Emitter::emit_verifying(const Detour& detour) {
    load_token(Register::rdi, current->at);
    load_token(Register::rsi, detour.loop);
    code.load_number(Register::rdx, key_of(*current));
    code.load_number(Register::rcx, static_cast<std::uint32_t>(detour.sign));
    call_or_fail(reinterpret_cast<const void*>(may_turn));
}

// Adds the step, and gives what tells whether the variable is past the limit.
Condition Emitter::emit_sum_of_reals(const ForEntry& entry, const VariableEntry& variable,
                                     std::int32_t sign) {
    const std::uint8_t* storage = variable.storage;
    const KeptVariable* kept = variables_kept.find(storage);
    const Type type = variable.type;
    if (kept != nullptr)
        copy(first_real, kept->where);
    else
        load_real(first_real, type, place(storage));
    on(Operation::addsd, first_real, &entry.step_as_double);
    if (type == Type::SINGLE) to_single(first_real);
    finite_or_fail(first_real);
    write_real_variable(variable);
    on(Operation::ucomisd, first_real, &entry.limit_as_double);
    return sign < 0 ? Condition::below : Condition::above;
}

Condition Emitter::emit_sum_of_wholes(const ForEntry& entry, const VariableEntry& variable,
                                      std::int32_t sign) {
    const std::uint8_t* storage = variable.storage;
    const Type type = variable.type;
    const Register sum = whole_register(0);
    load_whole(sum, type, place(storage));
    on(Operation::add, sum, &entry.step.integer);
    fail_if(Condition::overflow);
    write_whole(place(storage), type, sum);
    on(Operation::cmp, sum, &entry.limit.integer);
    return sign < 0 ? Condition::less : Condition::greater;
}

// ---- WHILE and WEND -------------------------------------------------------------------------------

// The statement behind a WEND.
static Token* behind(Token* wend) {
    return first_of_turn(fast::following(wend + 1));
}

// The WEND of a WHILE, as far as control has passed the ends of the lines up to it; else null.
static Token* find_wend(Token* at) {
    constexpr int farthest = 1000;  // records
    int open = 0;
    for (int i = 0; i != farthest && at != nullptr; ++i) {
        if (at->kind == END_OF_LINE) {
            at = at->line_end.next_line;
            continue;
        }
        if (at->kind == KW_WHILE) ++open;
        if (at->kind == KW_WEND && --open == 0) return at;
        ++at;
    }
    return nullptr;
}

// Computes the condition of the WHILE at `at`; false when there is no code for it.
bool Emitter::emit_condition_of(Token* at, Condition& when_true) {
    fast::begin_statement();
    fast::Expression condition;
    if (!fast::read_expression(at + 1, fast::Domain::whole, condition)) return false;
    begin_taking(condition.node().allocates, condition.node().draws);
    when_true = condition_of(condition.root);
    return true;
}

void Emitter::emit_while(Token* at) {
    Condition when_true;
    if (!emit_condition_of(at, when_true)) return give_up();
    const auto& record = as<fast::WhileRecord>(at);
    Token* wend = find_wend(at);
    if (wend != nullptr) {
        Label is_true;
        code.jump_if(when_true, is_true);
        end_then_part();
        code.jump(lead_to(behind(wend)));
        code.bind(is_true);
    } else {
        fail_if(opposite(when_true));
    }
    WhileEntry& entry = control_stacks.whiles[0];
    find_top(control_stacks.while_count, max_while_depth, sizeof entry);
    write_position(record.own, field(&entry.start, Register::rdx));
    load_token(Register::rax, at);
    code.emit(Operation::mov_store, Register::rax, field(&entry.token, Register::rdx));
    code.store_number_32(field(&entry.epoch, Register::rdx), program.cache_epoch);
    code.emit(Unary::inc_32, place(&control_stacks.while_count));
    go_on(record.after);
}

// Control goes to the WHILE of the last entry, which is taken away. While the condition is true it would be
// put back as it was: so where that WHILE is known the condition is looked at here, and the entry stays. The
// WHILE may look again, which can be noticed when that takes anything.
void Emitter::emit_wend() {
    WhileEntry& entry = control_stacks.whiles[0];
    find_last(control_stacks.while_count, sizeof entry);
    code.emit(WithNumber::cmp_32, field(&entry.epoch, Register::rdx),
              static_cast<std::int32_t>(program.cache_epoch));
    fail_if(Condition::not_equal);
    code.emit(Operation::mov, Register::rdi, field(&entry.token, Register::rdx));
    Place* loop = nullptr;
    for (Place* origin : region.natives())
        if (!is_rehearsal && origin->at->kind == KW_WHILE && !origin->takes &&
            find_wend(origin->at) == current->at)
            loop = origin;
    Label elsewhere;
    if (loop != nullptr) {
        compare_token(loop->at);
        code.jump_if(Condition::not_equal, elsewhere);
        Condition when_true;
        Label is_false;
        if (!emit_condition_of(loop->at, when_true)) return give_up();
        end_wend();
        code.jump_if(opposite(when_true), is_false);
        code.emit(Unary::dec_32, Register::rbx);
        code.jump_if(Condition::equal, loop->pause_again);
        code.jump(lead_to(as<fast::WhileRecord>(loop->at).after));
        code.bind(is_false);
        code.emit(Unary::dec_32, place(&control_stacks.while_count));
        code.emit(Unary::dec_32, Register::rbx);
        code.jump_if(Condition::equal, loop->fail);
        code.jump(lead_to(behind(current->at)));
        code.bind(elsewhere);
        find_last(control_stacks.while_count, sizeof entry);
    }
    on(Operation::mov_store_32, Register::rax, &control_stacks.while_count);
    end_wend();
    lead_to_one(KW_WHILE);
}

void Emitter::end_wend() {
    code.store_number_64(place(&execution.kept_token), 0);
    end_then_part();
}

}  // namespace korvane::native
