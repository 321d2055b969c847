// Plays inputs into the machine, each from the same moment, and checks after each what must always hold.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "machine.h"

namespace korvane::fuzz {

// Counts of what has been played by this program.
struct Counts {
    std::uint64_t inputs = 0;
    std::uint64_t lines = 0;       // typed
    std::uint64_t compared = 0;    // inputs, with what another interpreter makes of them
    std::uint64_t native = 0;      // of these, with machine code
    std::uint64_t most_steps = 0;  // between two looks for a key, where steps are counted
};
extern Counts counts;

// Types a line and Enter, and lets the interpreter go on until it wants a key. False when it never will.
bool type(std::string_view line);

// The same for a session: text whose control characters stand for keys and happenings.
//
//     10            Enter
//     1 to 26       keys without a character: the cursor keys, Home, End, Ins, Del, Page Up and Down, F1 to
//     F10;
//                   but 8 and 9 are themselves, and 13 is a carriage return in the middle
//     27            Escape
//     28 N          Escape at the N-th look for a key that finds none, in the next line's run
//     29 S N C      service S (by its number) fails from its N-th use on: C times, with a status that C
//     chooses 30            no service fails any more 31            the stick with the volume is pulled out
//     127           Delete
bool type_session(std::string_view text);

// The state in words: screen, program, variables, and where the program stands. What two interpreters that
// have done the same must have in common.
std::string describe_state();

// At the moment from which inputs are played.
void note_moment();

// Before an input: takes the machine back to the moment.
void begin_input();

// What stands on the screen in a row that holds nothing else.
bool is_on_screen(std::string_view text);

// At a prompt: which handles and pool blocks are held that nobody is to hold; empty when there are none. What
// a failing service has not taken back, nobody can.
std::string resources_left(bool stick_pulled, bool pool_kept);

// After an input: complains when something does not hold.
void check();

}  // namespace korvane::fuzz
