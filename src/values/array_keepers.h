// Which statements keep the address of an array.
//
// A specialised statement keeps the addresses of the arrays in it (fast/elements.h) for a clear generation.
// ERASE ends none as long as only what kept the erased array has to go: the statements that are noted here.
// What keeps arrays without being noted (machine code, the bodies of user functions) says so; then nobody
// knows which, and the generation ends with the first array.
#pragma once

#include "program/token.h"

namespace korvane {

struct ArrayBlock;

// The statement at `at` keeps the array's address until the generation ends.
void note_array_keeper(const ArrayBlock* array, Token* at);

// Something keeps arrays that nobody is to know of.
void note_unknown_array_keeper();

// Has the statements that keep the array specialised anew. False when not all that keeps it is known.
bool forget_array_keepers(const ArrayBlock* array);

}  // namespace korvane
