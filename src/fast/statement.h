// What specialised statements share: how control moves on and how they fall back to the general handlers.
//
// A specialised statement ends by calling the next one, as the last thing it does: the compiler makes a jump
// of that, so that statements follow one another without returning. The number of statements that may still
// be executed is handed along; when it is used up, or something has to be looked at, the chain of jumps ends
// and the run loop takes over. The current line is not kept up to date meanwhile: the end record of a token's
// line knows it, and whoever needs it asks (enter_line_of).
#pragma once

#include <cstdint>

#include "platform/processor.h"
#include "program/arenas.h"
#include "program/execution.h"
#include "program/program_store.h"
#include "program/token.h"
#include "run/specialised.h"
#include "values/random.h"

namespace korvane::fast {

struct State {
    bool target_not_ready;  // a line was not tokenized yet when a statement that leads there was looked at
    Token* look_at;         // where the run loop goes on
    Token* specialised;     // the statement that is being specialised; null when none is
    Token* drawing;         // the last statement that has drawn random numbers; null when it is gone
    RandomState random;     // what it found
};
extern State state;

// Executes the statement at `at` by its general handler, and goes on behind it unless the run loop has to
// look: an error, a stop, or something switched on that it checks before each statement.
std::uint64_t execute_general(Token* at, std::uint64_t budget);

// The same for an IF, whose general handler also executes the first statement of the THEN part.
std::uint64_t execute_general_if(Token* at, std::uint64_t budget);

// The same for a statement that may have taken string space or drawn random numbers before it failed: it
// starts again with what it found.
std::uint64_t fall_back(Token* at, std::uint64_t budget, std::uint8_t* string_top);

// Gives back what the statement has taken.
void give_back(const Token* at, std::uint8_t* string_top);

// Ends the chain of statements in front of the one at `at`.
std::uint64_t pause(Token* at);

// Goes on with the statement at `at`.
inline std::uint64_t proceed(Token* at, std::uint64_t budget) {
    if (__builtin_expect(--budget == 0, false)) return pause(at);
    KORVANE_JUMP return at->execute(at, budget);
}

// The same for a jump, which leaves a THEN part.
inline std::uint64_t jump(Token* at, std::uint64_t budget) {
    execution.then_part = false;
    KORVANE_JUMP return proceed(at, budget);
}

// Makes the line of a token the current one.
void enter_line_of(const Token* at);

// Takes the token into the current generation. The variable that a name remembered belongs to the old one.
inline void enter_generation(Token* at) {
    if (at->kind == IDENTIFIER && at->generation != arenas.generation) at->resolution = UNRESOLVED;
    at->generation = arenas.generation;
}

inline bool is_current(const Token* at) {
    return at->generation == arenas.generation;
}

// ---- What a statement may keep ------------------------------------------------------------------
//
// In its records a statement keeps what it has learned, for one of two lives:
//
// The epoch of the token cache, which is the life of the records themselves (program/positions.h). For as
// long, tokens, lines and positions of the program may be kept: where a jump leads, which statement follows.
// It needs no check, for nobody gets to a record that is gone.
//
// The clear generation (arenas.generation), in which no variable moves, goes or changes its type. For as
// long, addresses of variables, array blocks and user functions may be kept, and what was decided by a type
// or by the absence of a variable. Whatever clears or moves variables ends it (CLEAR, CHAIN, the first
// assignment to a name that was read before, ERASE of an array that has scalars behind it), and so does DEF
// FN. ERASE of any other array takes only those statements out of it that keep the array's address
// (values/array_keepers.h). In both cases the records live on, with addresses
// that must not be followed any more. So a statement that keeps any of these runs behind a guard, which looks
// whether the generation is still the one that it was specialised in, and has it specialised again when not.
// No statement with a guard ends a generation itself; only general handlers do.
//
// The guard is the only way from a statement's body, which takes a Current, to an Execute: nobody else can
// make a Current.

// The first token of a statement that is known to have been specialised in the current generation.
#ifdef __clang__
// A jump that is asked for leads only to a function of the very same signature; the image's compiler sees to
// the guards.
using Current = Token*;
#else
class Current {
  public:
    operator Token*() const { return token; }
    Token* operator->() const { return token; }

  private:
    explicit Current(Token* at) : token(at) {}

    template <std::uint64_t (*body)(Current at, std::uint64_t budget)>
    friend std::uint64_t guarded(Token* at, std::uint64_t budget);

    Token* token;
};
#endif

template <std::uint64_t (*body)(Current at, std::uint64_t budget)>
std::uint64_t guarded(Token* at, std::uint64_t budget) {
    if (__builtin_expect(!is_current(at), false)) KORVANE_JUMP return execute_first(at, budget);
    KORVANE_JUMP return body(Current(at), budget);
}

// Whether the statement is executed by something better than its general handler, as far as its token tells;
// and whether it has been looked at in vain, and will not have anything better unless variables are created.
bool has_own_form(const Token* at);
bool has_been_given_up(const Token* at);

// Opens the loop of the specialised FOR at `at`; false when that is for the general handler to do.
bool open_loop(Token* at);

// Reads items into the places of the specialised READ at `at`; false when that is for the general handler to
// do.
bool read_items(const Token* at);

// Executes the specialised NEXT at `at` for the innermost loop, whatever depth and FOR it was made for.
std::uint64_t next_at_any_depth(Token* at, std::uint64_t budget);

// Makes the statement, which has its handler, one that draws random numbers: fall_back() gives them back.
void keep_random(Token* at);

// The statement behind the token at which one ended: colons are passed over.
inline Token* following(Token* at) {
    while (at->kind == ':')
        ++at;
    return at;
}

// The token array of a line when it stays in the cache, else null.
inline Token* cached_tokens(std::uint32_t line) {
    return line < program.count ? program.lines[line].tokens : nullptr;
}

// Try to specialise the statement at `at`, which is in the current line, by its kind: true when at->execute
// has been set to something better than the general handler. They may be called again for the same statement,
// in a later generation or when variables have been created since.
[[gnu::cold]] bool specialise_assignment(Token* at);
[[gnu::cold]] bool specialise_if(Token* at);
[[gnu::cold]] bool specialise_goto(Token* at);
[[gnu::cold]] bool specialise_gosub(Token* at);
[[gnu::cold]] bool specialise_on(Token* at);
[[gnu::cold]] bool specialise_return(Token* at);
[[gnu::cold]] bool specialise_for(Token* at);
[[gnu::cold]] bool specialise_next(Token* at);
[[gnu::cold]] bool specialise_while(Token* at);
[[gnu::cold]] bool specialise_wend(Token* at);
[[gnu::cold]] bool specialise_swap(Token* at);
[[gnu::cold]] bool specialise_read(Token* at);

}  // namespace korvane::fast
