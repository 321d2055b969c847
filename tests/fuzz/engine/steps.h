// How long the interpreter goes on without a look at the keyboard: whoever sits in front of it can do nothing
// meanwhile. Time depends on what else a computer does; steps are the pieces of the interpreter's code that
// are entered, counted where the compiler has been told to (the preset 'fuzz'), and 0 elsewhere.
#pragma once

#include <cstdint>

namespace korvane::fuzz {

// Beyond this is a finding. docs/testing.md tells what comes near it.
inline constexpr std::uint64_t most_steps_without_look = 100'000'000;

// The keyboard has been looked at.
void note_look();

// At most, since forget_steps().
std::uint64_t most_steps();
void forget_steps();

}  // namespace korvane::fuzz
