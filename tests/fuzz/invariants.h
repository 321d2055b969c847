// What must hold of the interpreter's state whenever it waits for a key, whatever has been typed.
#pragma once

#include <string>
#include <vector>

namespace korvane::fuzz {

// The rules that are broken, each in words; empty when all is well. Looks only at memory that the interpreter
// says is its own, and believes no pointer before it has checked it.
//
// A session that may write to any memory (POKE, BLOAD) may break them all.
std::vector<std::string> broken_invariants();

}  // namespace korvane::fuzz
