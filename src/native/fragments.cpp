// The code that there is, and when more is made.
//
// The run loop gets control back every few hundred statements. Where it does is where a program spends its
// time, so that is where code is made: for the statement and all that control may reach from it without
// leaving what has been specialised. Nothing is counted for that while statements run.
//
// Making code for a statement takes nearly as long as the run loop stays away. So where the program has been
// most of the time, as in a small loop, each time that the run loop passed is worth code for one statement:
// code is made when running without it has cost about as much as it will. Where a program has been for less
// than half of its time the look is worth less, down to a thirtieth of that, and code is made only for many
// statements at a time: a program that goes through thousands of lines may end before it comes back here. But
// the time that it saves by the code it has is spent for more: so one that goes on and on gets code for all
// of its lines, and one that ends at any moment has lost a thirtieth at most. What has code already is left
// out there, for the program is not in one loop.
//
// All code is for one clear generation and is forgotten with it; statements look whether theirs is the
// current one when they are entered. What ends generations often makes it take longer until the first look.
#include <algorithm>
#include <new>

#include "fast/links.h"
#include "fast/records.h"
#include "fast/statement.h"
#include "native/emitter.h"
#include "native/executable_memory.h"
#include "native/state.h"
#include "program/arenas.h"
#include "program/keywords.h"
#include "program/line_starts.h"
#include "program/program_store.h"
#include "run/control_stacks.h"
#include "run/native.h"
#include "values/array_keepers.h"
#include "values/variables.h"

namespace korvane::native {

std::uint32_t missed;
std::uint8_t* string_top;

namespace {

// Statements must follow one another by jumps, for whoever called them would miss its registers. Only the
// image's own compiler has been told to see to that, and that of whoever asks for native code by itself.
#ifndef KORVANE_NATIVE_THRESHOLD
#ifdef KORVANE_FREESTANDING
#define KORVANE_NATIVE_THRESHOLD 32
#else
#define KORVANE_NATIVE_THRESHOLD 0
#endif
#endif
constexpr std::uint32_t first_threshold = KORVANE_NATIVE_THRESHOLD;
constexpr std::uint32_t most_patience = 8;
constexpr bool makes_code = first_threshold != 0;
constexpr std::uint64_t remembered_looks = 64;
constexpr std::uintptr_t nearness = 512 * sizeof(Token);  // of places that may be in one loop
constexpr std::uint64_t least_near = 2;
constexpr std::int64_t cost_of_writing = 8;  // in statements, however many there are
constexpr std::int64_t enough_for_some = 2 * cost_of_writing;
constexpr std::int64_t enough_for_all = most_places + cost_of_writing;
constexpr std::uint32_t first_missed = 64;
constexpr std::size_t usual_bytes_per_statement = 256;

struct Fragments {
    std::uint32_t generation;                  // of all code that there is
    std::size_t used;                          // bytes of the memory for code
    std::uint32_t saved;                       // times that the run loop has passed since code was made
    std::uint64_t passed;                      // the same in this generation, which may last for days
    std::uint64_t gained;                      // how many of these times it was at code
    std::int64_t made;                         // what the code cost that was made in it, in statements
    const Token* passed_at[remembered_looks];  // the last places
    std::uint32_t patience;                    // doublings of how many are to be saved up in a generation
    std::uint32_t needed;       // how many now: more when the last look found nothing to be made
    std::uint32_t most_missed;  // how often code may be left needlessly before it is made anew
    std::uint32_t last_key;
    bool is_spread;  // the program has been elsewhere for most of the time
    bool is_off;     // no code can be made
};
Fragments fragments;

// Room for what code is made with, which is nothing before that.
alignas(Region) std::byte region_room[sizeof(Region)];
alignas(Emitter) std::byte emitter_room[sizeof(Emitter)];
Region& region = *reinterpret_cast<Region*>(region_room);
Emitter& emitter = *reinterpret_cast<Emitter*>(emitter_room);

// ---- Ways in --------------------------------------------------------------------------------------

// Where a statement leads to its code: in the record behind its first one, which begins no statement, or in
// its own where that may be the only one.
bool is_short(const Token* at) {
    return at->kind == KW_NEXT || at->kind == KW_RETURN || at->kind == KW_WEND;
}

struct ShortRecord {
    std::uint8_t kind;
    std::uint8_t unused_bytes[3];
    std::uint32_t generation;
    Execute code;
    void* unused[5];
    Execute execute;
};

std::uint64_t enter(Token* at, std::uint64_t budget) {
    if (__builtin_expect(!fast::is_current(at), false)) KORVANE_JUMP return execute_first(at, budget);
    KORVANE_JUMP return at[1].execute(at, budget);
}

std::uint64_t enter_short(Token* at, std::uint64_t budget) {
    if (__builtin_expect(!fast::is_current(at), false)) KORVANE_JUMP return execute_first(at, budget);
    KORVANE_JUMP return fast::as<ShortRecord>(at).code(at, budget);
}

bool is_native(const Token* at) {
    return (at->execute == enter || at->execute == enter_short) && fast::is_current(at);
}

void lead_in(Token* at, Execute code) {
    if (is_short(at))
        fast::as<ShortRecord>(at).code = code;
    else
        at[1].execute = code;
    at->execute = is_short(at) ? enter_short : enter;
    at->generation = arenas.generation;
}

// ---- Making code ----------------------------------------------------------------------------------

// Whether a statement may have code: it has been specialised, or needs no more than its tokens.
bool is_ready(const Token* at) {
    if (begins_watched_line(at)) return false;
    switch (at->kind) {
        case END_OF_LINE:
            return fast::as<fast::EndRecord>(at).next_line != nullptr;
        case ':':
        case KW_REM:
        case KW_DATA:
        case KW_ELSE:
            return true;
        // What they keep is good for longer than a generation.
        case KW_GOTO:
        case KW_GOSUB:
        case KW_RETURN:
        case KW_WEND:
            return fast::has_own_form(at);
        default:
            return has_entry(at) && fast::is_current(at) && fast::has_own_form(at);
    }
}

// Whether it could be later. One that has been looked at in vain will not be.
bool may_become_ready(const Token* at) {
    if (at->kind == END_OF_LINE) return true;
    return has_entry(at) && !begins_watched_line(at) &&
           !(fast::is_current(at) && fast::has_been_given_up(at));
}

// Where the loops begin that are open, and where the subroutine returns to: control is somewhere in these.
void lead_to_loops() {
    if (control_stacks.gosub_count != 0) {
        const GosubEntry& call = control_stacks.gosubs[control_stacks.gosub_count - 1];
        if (call.kind == GosubKind::GOSUB && call.epoch == program.cache_epoch) region.lead_to(call.token);
    }
    if (control_stacks.for_count != 0) {
        const ForEntry& loop = control_stacks.fors[control_stacks.for_count - 1];
        if (loop.quick_variable != nullptr && loop.generation == arenas.generation)
            region.lead_to(loop.loop_token);
    }
    if (control_stacks.while_count != 0) {
        const WhileEntry& loop = control_stacks.whiles[control_stacks.while_count - 1];
        if (loop.epoch == program.cache_epoch) region.lead_to(loop.token);
    }
}

// To come in and leave again at once would take longer than the specialised statement takes. So it would
// where a GOSUB from elsewhere comes back; within the code it is reached there, and so is the RETURN.
bool is_worth_entering(const Place& place) {
    const bool calls = place.at->kind == KW_GOSUB || place.at->kind == KW_RETURN;
    const bool stays = place.run == longest_run && !calls;
    return has_entry(place.at) && (stays || first_threshold == 1);
}

// Where the lines without code begin that a statement of a long program is among, or some of them: what one
// piece leaves out in front of itself would be small pieces later, and each way from one to another takes as
// long as many statements.
Token* begin_of_gap(Token* at) {
    constexpr std::uint32_t most = most_places / 2;
    const std::uint32_t line = fast::as<fast::EndRecord>(fast::end_of_line(at)).line;
    if (line == direct_line) return at;
    for (std::uint32_t i = 1; i <= most && i <= line; ++i) {
        Token* before = program.lines[line - i].tokens;
        if (before == nullptr || !is_ready(before) || is_native(before)) break;
        at = before;
    }
    return at;
}

// Finds the statements that are to have code, at most so many; `is_cut`: there are more. Gives how many of
// them had none.
std::size_t find_region(Token* first, std::size_t most, bool& is_cut) {
    const bool leaves_out = fragments.is_spread && !is_native(first);
    std::size_t fresh = 0;
    is_cut = false;
    new (emitter_room) Emitter(region);
    region.clear();
    lead_to_loops();
    region.lead_to(first);
    if (leaves_out) region.lead_to(begin_of_gap(first));
    while (region.pending.count != 0) {
        Token* at = region.pending.tokens[--region.pending.count];
        Place* place = region.find_or_add(at);
        if (place == nullptr || place->is_seen) continue;
        place->is_seen = true;
        const bool is_left = region.natives().size() == most;
        const bool ready = is_ready(at) && !(leaves_out && is_native(at));
        is_cut |= is_left && ready;
        place->is_native = ready && !is_left && emitter.rehearse(*place);
        place->may_become = (ready && is_left && has_entry(at)) || (!ready && may_become_ready(at));
        if (!place->is_native) continue;
        region.append(*place);
    }
    region.find_loops();
    region.find_runs();
    for (const Place* place : region.natives())
        if (is_worth_entering(*place) && !is_native(place->at)) ++fresh;
    return fresh;
}

// Makes code for the region that has been found.
void make() {
    if (!executable_memory.take()) {
        fragments.is_off = true;
        return;
    }
    constexpr std::size_t boundary = 64;
    const std::size_t start = (fragments.used + boundary - 1) / boundary * boundary;
    // Room that suffices nearly always, because protecting more pages takes longer; else much more.
    std::span<std::byte> memory;
    bool made;
    std::size_t bytes = (region.natives().size() + 1) * usual_bytes_per_statement;
    do {
        memory = executable_memory.begin_writing(start, bytes);
        made = emitter.emit_region(memory);
        bytes *= 16;
    } while (!made && emitter.is_full() && bytes < 16 * most_code_bytes);
    if (!executable_memory.end_writing()) {
        fragments.is_off = true;
        ++arenas.generation;
        return;
    }
    fragments.made += static_cast<std::int64_t>(region.natives().size()) + cost_of_writing;
    if (!made) {
        if (!emitter.is_full()) return;
        if (!executable_memory.grow()) {
            if (fragments.used == 0) return;
            ++arenas.generation;
        }
        fragments.used = 0;
        return;
    }
    fragments.used = start + emitter.size();
    note_unknown_array_keeper();
    for (Place* place : region.natives())
        if (is_worth_entering(*place))
            lead_in(place->at, reinterpret_cast<Execute>(memory.data() + place->entry.position()));
}

std::uint32_t threshold() {
    return first_threshold << fragments.patience;
}

// For how many statements code may be made at a place now; 0 where there is not enough for a loop of some.
std::int64_t worth_of_code(const Token* at) {
    if (first_threshold == 1) return enough_for_all;
    const std::uint64_t recent = std::min(fragments.passed, remembered_looks);
    std::uint64_t near = 0;
    for (std::uint64_t i = 0; i != recent; ++i) {
        const auto distance =
            reinterpret_cast<std::uintptr_t>(fragments.passed_at[i]) - reinterpret_cast<std::uintptr_t>(at);
        if (distance + nearness <= 2 * nearness) ++near;
    }
    fragments.is_spread = 2 * near < recent;
    if (fragments.is_spread) near = std::max(near / 2, least_near);
    const std::int64_t worth =
        static_cast<std::int64_t>(fragments.passed * near / recent + fragments.gained) - fragments.made;
    return worth < (fragments.is_spread ? enough_for_all : enough_for_some) ? 0 : worth;
}

// Code that has not been used for much longer than it took to make was not worth it: the next time it has to
// be waited for longer.
void begin_generation() {
    if (fragments.made != 0 && fragments.passed < 4 * threshold())
        fragments.patience = std::min(fragments.patience + 1, most_patience);
    else if (fragments.passed > 64 * threshold())
        fragments.patience = 0;
    fragments.generation = arenas.generation;
    fragments.used = 0;
    fragments.saved = 0;
    fragments.passed = 0;
    fragments.gained = 0;
    fragments.needed = threshold();
    fragments.most_missed = first_missed;
    fragments.made = 0;
    executable_memory.start_over();
    missed = 0;
}

}  // namespace

void initialize() {
    fragments = Fragments{};
    executable_memory.forget();
}

void give_back_memory() {
    fragments.is_off = true;
    executable_memory.give_back();
}

std::array<Base, 3> bases() {
    // From the middle of the first variables a distance of one byte reaches most of them.
    return {{{Register::rbp, reinterpret_cast<std::uint64_t>(variables.table) + 128},
             {Register::r14, reinterpret_cast<std::uint64_t>(&execution)},
             {Register::r13, reinterpret_cast<std::uint64_t>(arenas.CODEBASE)}}};
}

bool has_entry(const Token* at) {
    switch (at->kind) {
        case IDENTIFIER:
        case KW_LET:
        case KW_IF:
        case KW_GOTO:
        case KW_GOSUB:
        case KW_RETURN:
        case KW_FOR:
        case KW_NEXT:
        case KW_WHILE:
        case KW_WEND:
        case KW_SWAP:
        case KW_READ:
        case KW_ON:
            return true;
        default:
            return false;
    }
}

std::uint32_t new_key() {
    return ++fragments.last_key;
}

bool may_turn(Token* at, const Token* loop, std::uint32_t key, std::int32_t sign) {
    ForEntry& entry = control_stacks.fors[control_stacks.for_count - 1];
    if (entry.quick_variable != fast::as<fast::NextRecord>(at).variable ||
        entry.generation != arenas.generation || entry.step_sign != sign)
        return false;
    const Token* first = entry.loop_token;
    if (first != loop && !(first->kind == END_OF_LINE && first->line_end.next_line == loop)) return false;
    entry.turn_key = key;
    return true;
}

void begin_drawing(Token* at) {
    fast::state.drawing = at;
    fast::state.random = random_state;
}

std::uint64_t fall_back_from_taking(Token* at, std::uint64_t budget) {
    fast::give_back(at, string_top);
    return at->kind == KW_IF ? fast::execute_general_if(at, budget) : fast::execute_general(at, budget);
}

void look(Token* at) {
    if (!makes_code || fragments.is_off) return;
    if (fragments.generation != arenas.generation) begin_generation();
    fragments.passed_at[fragments.passed++ % remembered_looks] = at;
    fragments.gained += is_native(at);
    if (++fragments.saved < fragments.needed) return;
    const bool has_missed = missed >= fragments.most_missed;
    if (is_native(at) && !has_missed) return;
    fragments.saved = 0;
    const std::int64_t worth = worth_of_code(at);
    if (worth == 0) return;
    bool is_cut;
    const auto most = static_cast<std::size_t>(std::min<std::int64_t>(worth - cost_of_writing, most_places));
    const bool is_useful = find_region(at, most, is_cut) != 0 || has_missed;
    // What there is not enough for yet is looked at again when there is twice as much.
    if (!is_useful || (is_cut && most != most_places)) {
        fragments.needed = std::min(2 * fragments.needed, first_threshold << most_patience);
        return;
    }
    make();
    fragments.needed = threshold();
    if (has_missed) fragments.most_missed *= 4;
    missed = 0;
}

void note_specialised(Token* at) {
    if (first_threshold != 1 || fragments.is_off) return;
    if (fragments.generation != arenas.generation) begin_generation();
    bool is_cut;
    if (is_ready(at) && find_region(at, most_places, is_cut) != 0) make();
}

}  // namespace korvane::native
