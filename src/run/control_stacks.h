// The stacks of control flow: where RETURN, NEXT and WEND go back to.
#pragma once

#include <cstdint>

#include "numbers/value.h"
#include "program/execution.h"
#include "program/positions.h"
#include "program/token.h"

namespace korvane {

struct VariableEntry;

inline constexpr std::uint32_t max_gosub_depth = 128;
inline constexpr std::uint32_t max_for_depth = 64;
inline constexpr std::uint32_t max_while_depth = 64;

enum class GosubKind : std::uint8_t { GOSUB = 0, TIMER = 1 };

struct GosubEntry {
    std::uint32_t line;  // return position
    std::uint32_t record;
    GosubKind kind;
    std::uint8_t timer;   // event timer that a TIMER entry makes ready again
    std::uint32_t epoch;  // in which the position was taken and `token` is good
    Token* token;         // the statement to return to
};

struct ForEntry {
    char name[name_capacity];  // of the control variable
    Value limit;
    Value step;
    VariableEntry* variable;  // good while `generation` is current
    std::uint32_t generation;
    double step_as_double;
    double limit_as_double;
    bool limit_is_double;  // limit_as_double compares like the limit itself
    Type variable_type;
    std::int32_t step_sign;  // -1, 0 or 1
    bool whole;              // variable, limit and step are integers
    Position loop;           // the record after the FOR statement
    std::uint32_t epoch;     // in which `loop` was taken
    // Of the NEXT in native code that goes on with the loop's turns, once that has been found to be right; 0
    // when the loop is opened.
    std::uint32_t turn_key;
    // What the specialised NEXT needs, good while `generation` is current: the loop's first statement, and
    // the variable again if that NEXT can serve this loop, else null.
    Token* loop_token;
    VariableEntry* quick_variable;
};

struct WhileEntry {
    Position start;  // the WHILE token
    Token* token;    // the same, good in the epoch in which it was taken
    std::uint32_t epoch;
};

struct ControlStacks {
    std::uint32_t gosub_count;
    std::uint32_t for_count;
    std::uint32_t while_count;
    GosubEntry gosubs[max_gosub_depth];
    ForEntry fors[max_for_depth];
    WhileEntry whiles[max_while_depth];
};
extern ControlStacks control_stacks;

void clear_control_stacks();

// For the direct line, before its records become another line's: positions in it are of no epoch from now on.
void forget_direct_line();

// Raises "Out of memory" and gives false when 128 entries are stacked.
bool push_gosub(const GosubEntry& entry);
void pop_gosub();

}  // namespace korvane
