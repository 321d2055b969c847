// What specialised statements share: how they fall back to the general handlers and how control moves on.
#pragma once

#include <cstdint>

#include "core/arenas.h"
#include "core/execution.h"
#include "core/program_store.h"
#include "core/token.h"

namespace korvane::fast {

using Execute = Token* (*)(Token* at);

struct State {
    Token* kept_token;         // first statement of a THEN part, whose start is that of its IF
    std::uint32_t kept_start;  // the record of that IF
    bool target_not_ready;     // a line was not tokenized yet when a statement that leads there was looked at
    Token* look_at;            // where the run loop goes on after a statement gave null
};
extern State state;

// Executes the statement at `at` by its general handler. Gives the next statement, or null when the run loop
// has to look: an error, a stop, or something switched on that it checks before each statement.
Token* execute_general(Token* at);

// Takes the token into the current generation. The variable that a name remembered belongs to the old one.
inline void enter_generation(Token* at) {
    if (at->kind == IDENTIFIER && at->generation != arenas.generation) at->resolution = UNRESOLVED;
    at->generation = arenas.generation;
}

inline bool is_current(const Token* at) {
    return at->generation == arenas.generation;
}

// The statement behind the token at which one ended: colons are passed over.
inline Token* following(Token* at) {
    while (at->kind == ':')
        ++at;
    return at;
}

// Makes a line current and goes to one of its tokens.
inline Token* go_to(std::uint32_t line, Token* tokens, Token* at) {
    execution.line = line;
    execution.tokens = tokens;
    execution.then_part = false;
    return at;
}

// The token array of a line when it stays in the cache, else null.
inline Token* cached_tokens(std::uint32_t line) {
    return line < program.count ? program.lines[line].tokens : nullptr;
}

// Try to specialise the statement at `at` by its kind: true when at->execute has been set to something better
// than the general handler. They may be called again for the same statement, in a later generation or when
// variables have been created since.
bool specialise_assignment(Token* at);
bool specialise_if(Token* at);
bool specialise_goto(Token* at);
bool specialise_gosub(Token* at);
bool specialise_return(Token* at);
bool specialise_for(Token* at);
bool specialise_next(Token* at);
bool specialise_while(Token* at);
bool specialise_wend(Token* at);

}  // namespace korvane::fast
