// The user-defined functions: what DEF FN has defined, found by name.
//
// Parameters are ordinary global scalar variables whose values are saved and put back around a call
// (values/user_calls.cpp). The result keeps the body's own type; a suffix of the function's name is not
// applied (deliberate).
#pragma once

#include <cstdint>

#include "program/token.h"
#include "values/name_index.h"

namespace korvane {

struct VariableEntry;

inline constexpr std::uint32_t max_user_functions = 64;
inline constexpr std::int32_t max_parameters = 8;

struct UserFunction {
    char name[name_capacity];  // with FN and any type suffix
    std::int32_t parameter_count;
    char parameters[max_parameters][name_capacity];
    Token body[max_token_records];  // the defining expression and an end record
    std::int32_t body_length;       // tokens in it, the end record not counted
    // Of specialised calls: the body as the right side of a token of its own, and the parameters' variables.
    Token head;
    VariableEntry* entries[max_parameters];
    std::uint32_t generation;      // clear generation in which the body was looked at
    std::uint32_t variables_seen;  // how many variables there were then
    bool has_steps;                // the body is specialised
    bool allocates;                // evaluating it takes string space
    bool draws;                    // evaluating it draws random numbers
    int depth;                     // levels of its descent (fast/nodes.h)
};

// Functions that call others more than once multiply: a line or two make a statement that never ends. So the
// keyboard is looked at in the midst of a statement too, after so many calls.
inline constexpr std::uint32_t calls_between_looks = 65'536;

struct UserFunctions {
    std::uint32_t calls;      // since the keyboard was thought of
    std::uint64_t called_by;  // the statement that was executed then
    std::uint32_t count;
    NameIndex<max_user_functions> names;
    UserFunction functions[max_user_functions];
};
extern UserFunctions user_functions;

// Forgets all definitions; part of the clear operation.
void forget_user_functions();

// True when Escape has been pressed during a statement that has made very many calls: it is to be given up.
bool escape_between_calls();

// Notes a call. False when it is not to be made, because Escape was pressed.
inline bool may_call() {
    return ++user_functions.calls < calls_between_looks || !escape_between_calls();
}

// True for names that begin with FN and go on.
inline bool is_user_function_name(const char* name) {
    return name[0] == 'F' && name[1] == 'N' && name[2] != 0;
}

UserFunction* find_user_function(const char* name);

}  // namespace korvane
