// The interpreter's own variables: everything that its sources define, wherever the linker has put it.
#pragma once

#include <span>

#include "saved_memory.h"

namespace korvane::fuzz {

// Initialised variables and those that begin as zeros. They stand between the marks of interpreter_begin.cpp
// and interpreter_end.cpp, which are linked in front of the interpreter and behind it. Ends the program when
// a variable of the interpreter lies elsewhere.
std::vector<SavedMemory> interpreter_memory();

}  // namespace korvane::fuzz
