// What surrounds the code of statements: how control gets in and out, and from one to the next.
#include "native/emitter.h"

#include "fast/links.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "native/state.h"
#include "program/execution.h"
#include "program/keywords.h"
#include "run/control_stacks.h"

namespace korvane::native {
namespace {

std::array<std::byte, 4096> nowhere;

}  // namespace

void Emitter::begin(std::span<std::byte> room) {
    code = Assembler(room);
    variables_kept.clear();
    has_failed = false;
    detour_count = literal_count = 0;
    pausing = general = general_if = general_taking = next_elsewhere = leaving = leaving_anywhere = loading =
        Label();
}

// A user function whose body cannot be part of the code is called.
bool Emitter::rehearse(Place& place) {
    const std::size_t first = region.pending.count;
    do {
        begin(nowhere);
        is_rehearsal = true;
        emit_statement(place);
        is_rehearsal = false;
        clear_labels(place);
        if (!has_failed && !code.full() && region.note_targets(place, first)) return true;
        region.pending.count = first;
        place.calls_users = !place.calls_users;
    } while (place.calls_users && calls_entered != 0);
    return false;
}

bool Emitter::emit_region(std::span<std::byte> room) {
    begin(room);
    variables_kept.choose(region);
    for (std::size_t i = 0; i != region.count(); ++i)
        clear_labels(region[i]);
    const auto natives = region.natives();
    for (std::size_t i = 0; i != natives.size(); ++i) {
        Place& place = *natives[i];
        next = i + 1 == natives.size() ? nullptr : natives[i + 1];
        code.bind(place.head);
        current = &place;
        if (!place.counts_itself) count();
        emit_statement(place);
    }
    for (std::size_t i = 0; i != region.count(); ++i)
        emit_leaving(region[i]);
    emit_detours();
    for (Place* place : natives)
        emit_ends(*place);
    emit_common_ends();
    return !has_failed && !code.full();
}

// A statement more; none is left when it is paused in front of it.
void Emitter::count() {
    code.emit(Unary::dec_32, Register::rbx);
    fail_if(Condition::equal);
}

void Emitter::clear_labels(Place& place) {
    place.head = place.fail = place.pause_again = place.branch = place.entry = Label();
    place.opener = nullptr;
}

void Emitter::emit_statement(Place& place) {
    current = &place;
    binding_count = 0;
    first_real = Vector::xmm0;
    calls_entered = 0;
    Token* at = place.at;
    switch (at->kind) {
        case END_OF_LINE:
            end_then_part();
            go_on(fast::as<fast::EndRecord>(at).next_line);
            break;
        case ':':
            go_on(fast::following(at));
            break;
        case KW_REM:
            go_on(fast::end_of_line(at));
            break;
        case KW_DATA:
            while (at->kind != END_OF_LINE && at->kind != ':')
                ++at;
            go_on(fast::following(at));
            break;
        case KW_ELSE:
            emit_else(at);
            break;
        case IDENTIFIER:
        case KW_LET:
            emit_assignment(at);
            break;
        case KW_IF:
            emit_if(at);
            break;
        case KW_GOTO:
            end_then_part();
            go_on(at[1].number.target);
            break;
        case KW_GOSUB:
            emit_gosub(at);
            break;
        case KW_RETURN:
            emit_return();
            break;
        case KW_FOR:
            emit_for(at);
            break;
        case KW_NEXT:
            emit_next(at);
            break;
        case KW_WHILE:
            emit_while(at);
            break;
        case KW_WEND:
            emit_wend();
            break;
        case KW_SWAP:
            emit_swap(at);
            break;
        case KW_READ:
            emit_read(at);
            break;
        case KW_ON:
            emit_on(at);
            break;
        default:
            give_up();
    }
}

// ---- From one statement to another ----------------------------------------------------------------

Label& Emitter::lead_to(Token* at) {
    if (!is_rehearsal) return region.find(at)->head;
    region.lead_to(at);
    unused = Label();
    return unused;
}

void Emitter::go_on(Token* at) {
    if (!is_rehearsal && next != nullptr && next->at == at) return;
    code.jump(lead_to(at));
}

void Emitter::load_token(Register target, const Token* token) {
    on(Operation::lea, target, token);
}

// All tokens of the cache lie so near to one another that the lower halves of their addresses differ.
void Emitter::compare_token(const Token* token) {
    const auto low = static_cast<std::uint32_t>(reinterpret_cast<std::uint64_t>(token));
    code.emit(WithNumber::cmp_32, Register::rdi, static_cast<std::int32_t>(low));
}

// A THEN part is open only behind an IF of the same line: whatever goes to another line has ended it.
bool Emitter::may_be_then_part() const {
    const Token* end = fast::end_of_line(current->at);
    const Token* at = end - fast::as<fast::EndRecord>(end).record;
    while (at != current->at && at->kind != KW_IF)
        ++at;
    return at != current->at;
}

void Emitter::end_then_part() {
    if (may_be_then_part()) code.store_number_8(place(&execution.then_part), 0);
}

// ---- Ways out -------------------------------------------------------------------------------------

// In front of a statement that has no code here.
void Emitter::emit_leaving(Place& place) {
    if (place.is_native || !place.head.is_used()) return;
    code.bind(place.head);
    if (place.opener != nullptr) keep_then_part(place.opener, place.at, true);
    load_token(Register::rdi, place.at);
    code.emit(Unary::dec_32, Register::rbx);
    code.jump_if(Condition::equal, pausing);
    if (place.may_become) code.emit(Unary::inc_32, this->place(&missed));
    code.jump(leaving);
}

// Where a statement fails, pauses, or is entered. An assignment that is a whole THEN part, and failed, tells
// that it was one; until then nobody asks.
void Emitter::emit_ends(Place& place) {
    current = &place;
    if (place.pause_again.is_used()) {
        code.bind(place.pause_again);
        code.emit(Unary::dec_32, this->place(&control_stacks.while_count));
        code.jump(place.fail);
    }
    // The general handler goes there, and the statement is looked at again.
    if (place.branch.is_used()) {
        code.bind(place.branch);
        code.load_number(Register::rax, reinterpret_cast<std::uint64_t>(execute_first));
        on(Operation::mov_store, Register::rax, &place.at->execute);
        code.emit(Unary::inc_32, this->place(&missed));
        code.jump(place.fail);
    }
    if (place.fail.is_used()) {
        code.bind(place.fail);
        load_token(Register::rdi, place.at);
        if (place.opener != nullptr) {
            Label known;
            code.emit(Operation::cmp, Register::rdi, this->place(&execution.kept_token));
            code.jump_if(Condition::equal, known);
            keep_then_part(place.opener, place.at, true);
            code.bind(known);
        }
        code.jump(place.takes                 ? general_taking
                  : place.at->kind == KW_IF   ? general_if
                  : place.at->kind == KW_NEXT ? next_elsewhere
                                              : general);
    }
    if (has_entry(place.at)) {
        code.bind(place.entry);
        code.call(loading);
        code.jump(place.head);
    }
}

// Where a statement fails; or it has not been begun, because none is left.
void Emitter::jump_to_function(std::uint64_t (*function)(Token* at, std::uint64_t budget)) {
    code.emit(Operation::test, Register::rbx, Register::rbx);
    code.jump_if(Condition::equal, pausing);
    code.emit(Operation::mov_32, Register::rsi, Register::rbx);
    code.load_number(Register::rax, reinterpret_cast<std::uint64_t>(function));
    code.emit(Unary::jmp, Register::rax);
}

void Emitter::emit_common_ends() {
    code.bind(pausing);
    code.load_number(Register::rax, reinterpret_cast<std::uint64_t>(fast::pause));
    code.emit(Unary::jmp, Register::rax);
    code.bind(general);
    jump_to_function(fast::execute_general);
    code.bind(general_if);
    jump_to_function(fast::execute_general_if);
    code.bind(general_taking);
    jump_to_function(fall_back_from_taking);
    code.bind(next_elsewhere);
    jump_to_function(fast::next_at_any_depth);
    code.bind(leaving_anywhere);
    code.emit(Unary::dec_32, Register::rbx);
    code.jump_if(Condition::equal, pausing);
    code.bind(leaving);
    code.emit(Operation::mov_32, Register::rsi, Register::rbx);
    code.emit(Unary::jmp, at(Register::rdi, __builtin_offsetof(Token, execute)));

    // Called, so that where it goes on is known beforehand: at a statement that has been counted already.
    code.bind(loading);
    code.emit(Operation::lea, Register::rbx, at(Register::rsi, 1));
    for (const Base& base : bases())
        code.load_number(base.where, base.address);
    code.load_number(Register::r12, 0xFFDFFFFFFFFFFFFF);
    load_variables();
    code.return_();
}

// ---- Detours --------------------------------------------------------------------------------------

Emitter::Detour* Emitter::add_detour(Detour::Kind kind) {
    if (detour_count == detours.size()) {
        give_up();
        return nullptr;
    }
    Detour& detour = detours[detour_count++];
    detour = Detour{};
    detour.kind = kind;
    detour.place = current;
    return &detour;
}

void Emitter::emit_detours() {
    for (std::size_t i = 0; i != detour_count; ++i) {
        Detour& detour = detours[i];
        current = detour.place;
        code.bind(detour.start);
        switch (detour.kind) {
            case Detour::Kind::record:
                put_record(detour.loop);
                continue;
            case Detour::Kind::rounding:
                emit_rounding(detour);
                break;
            case Detour::Kind::subscript:
                emit_subscript(detour);
                break;
            case Detour::Kind::verifying:
                emit_verifying(detour);
                break;
            case Detour::Kind::opening:
                load_token(Register::rdi, current->at);
                call_or_fail(reinterpret_cast<const void*>(fast::open_loop));
                break;
        }
        code.jump(detour.back);
    }
}

// A subscript that is beyond the bound, or whose variable is no whole number: then that is rounded, and kept.
void Emitter::emit_subscript(const Detour& detour) {
    code.emit(WithNumber::cmp, detour.target, 1);
    fail_if(opposite(Condition::overflow));
    code.emit(Operation::cvttsd2si, detour.target, detour.number);
    whole_to_real(detour.target, Vector::xmm15);
    emit_rounding(detour);
}

// A half is added away from zero: twice the fraction is 1 or -1 at least then.
void Emitter::emit_rounding(const Detour& detour) {
    code.emit(WithNumber::cmp, detour.target, 1);
    fail_if(Condition::overflow);
    code.emit(Operation::movaps, Vector::xmm14, detour.number);
    code.emit(Operation::subsd, Vector::xmm14, Vector::xmm15);
    code.emit(Operation::addsd, Vector::xmm14, Vector::xmm14);
    code.emit(Operation::cvttsd2si, Register::rax, Vector::xmm14);
    code.emit(Operation::add, detour.target, Register::rax);
}

}  // namespace korvane::native
