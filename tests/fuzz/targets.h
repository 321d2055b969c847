// What is fuzzed: each target says which part of the machine an input is, and what is typed to have it read.
#pragma once

#include <span>
#include <string_view>

#include "firmware.h"

namespace korvane::fuzz {

struct Target {
    std::string_view name;
    std::string_view reads;  // what of it comes from outside
    // Before the moment from which every input is played; a target without starts the interpreter anew for
    // each.
    void (*prepare)();
    // Gives the machine the input and types what makes the interpreter look at it. False when the interpreter
    // has come to an end, and its state is not to be looked at.
    bool (*play)(std::string_view input);
    // Shows nothing but what programs do: other interpreters must come to the same state.
    bool comparable = false;
    // Inputs are lines that somebody types, or that a program consists of.
    bool typed = false;
};

std::span<const Target> targets();
const Target* find_target(std::string_view name);

// The machine that most targets have: a volume with a few files, a disk, a boot variable. And those files.
Hardware usual_hardware();
void put_usual_files();

// Makes the machine for a target and takes it to its moment. Inputs are played for this target from then on.
// A tall screen has 40 rows instead of 10.
void prepare(const Target& target, bool tall = false);

// Plays one input from that moment, and checks what must hold; the same without the checks. False when the
// interpreter has come to an end.
bool play(std::string_view input);
bool play_only(std::string_view input);

// The target that is prepared.
const Target& current_target();

}  // namespace korvane::fuzz
