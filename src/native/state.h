// What native code in the making and at work shares: how it reaches the interpreter's memory, and what it
// calls of it.
#pragma once

#include <array>
#include <cstdint>

#include "native/assembler.h"
#include "program/token.h"

namespace korvane {
struct ForEntry;
}

namespace korvane::native {

// A register that holds an address all the time.
struct Base {
    Register where;
    std::uint64_t address;
};
std::array<Base, 3> bases();

// How often code was left for a statement that could have had code itself, counted by the code.
extern std::uint32_t missed;

// Whether a statement of this kind can be entered: others have no room for what leads to their code, and
// little to do.
bool has_entry(const Token* at);

// A number for the loops of each NEXT that gets code, which has not been there before.
std::uint32_t new_key();

// What code calls, or leaves to.

// Whether a NEXT of reals or wholes may go on with turns of the innermost loop by itself, until the loop ends
// or another is opened in its place: it is the one that the code was made for, and its turns begin at `loop`.
bool may_turn(Token* at, const Token* loop, std::uint32_t key, std::int32_t sign);

// Where string space began in front of the statement that is taking some.
extern std::uint8_t* string_top;

// Begins the statement that draws random numbers.
void begin_drawing(Token* at);

// Leaves for the general handler of such a statement, which starts again with what it found.
std::uint64_t fall_back_from_taking(Token* at, std::uint64_t budget);

}  // namespace korvane::native
