// What start-up and the specialised statements know of native code, which lives one floor above these:
// nothing else of it may be named there. Where it has been left out of the build, native/without_native.cpp
// stands in for it.
#pragma once

#include "program/token.h"

namespace korvane::native {

// Start-up: there is no code, nor memory for it. The image's end: that goes back to the firmware.
void initialize();
void give_back_memory();

// The run loop is about to go on at `at`, some hundred statements after the last time: native code is made
// for the statement, and those that belong to the same loops, when it is worth it.
void look(Token* at);

// The statement at `at` has just been specialised.
void note_specialised(Token* at);

}  // namespace korvane::native
