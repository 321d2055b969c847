// The built-in functions, found by name.
//
// The table (function_table.cpp) is one readable list; the functions themselves stand in files by subject.
// Names without "(" are looked up among the functions without arguments and the system variables, names in
// front of "(" among the functions with arguments; a name may stand in both lists.
#pragma once

#include <cstdint>
#include <string_view>

#include "numbers/value.h"
#include "program/token.h"
#include "values/argument_list.h"

namespace korvane {

struct UserFunction;

// A row of the table.
struct BuiltInFunction {
    char name[15];           // zero-padded; the longest name fills it
    ArgumentList arguments;  // says which of the following it is
    union {
        Value (*bare)();                                      // without arguments, or a system variable
        Value (*unary)(const Value&);                         // of one argument, which the evaluator reads
        Value (*several)(const Value* arguments, int count);  // of several, which it reads too
        Value (*call)(Cursor&);  // reads its own arguments; the cursor stands on "("
    };
};
static_assert(sizeof(BuiltInFunction) == 24);

const BuiltInFunction* find_bare_function(std::string_view name);
const BuiltInFunction* find_called_function(std::string_view name);

// Calls of the functions that DEF FN has defined. They are declared here, because evaluating one means
// evaluating its body: the evaluator and they cannot do without each other.

// A call with its arguments: the cursor stands on "(" behind the function's name. Raises "Undefined user
// function", "Too many args", "Wrong number of args", "Expected )", what the stores and the body raise, and
// "Out of memory" when functions call each other until the machine stack runs low.
Value evaluate_user_function(const Token& name, Cursor& cursor);

// Calls a function with its arguments already evaluated; `count` is its parameter count.
Value call_user_function(UserFunction& function, const Value* arguments, std::int32_t count);

// A name that can be read like a variable but not assigned: LOMEM, TXTMAXX and their like.
bool is_system_variable(const char* name);

// Up to `capacity` arguments in parentheses, at least `required` of them. Raises "Expected (", "Expected ,",
// "Expected )" and what the expressions raise. Returns how many there were; 0 after an error.
int read_arguments(Cursor& cursor, Value* arguments, int required, int capacity);

// A new string of so many bytes in string space for the caller to fill; Value::nothing() when it does not fit
// ("Out of string space" is raised, also above 4294967295 bytes).
struct NewString {
    std::uint8_t* bytes;
    Value value;
};
NewString new_string(std::uint64_t length);

// A copy of some bytes as a new string.
Value new_string_of(const void* bytes, std::uint64_t length);

// An integer result in the narrowest integer type that holds it.
Value narrowest_integer(std::int64_t integer);

// What a function gives after raising an error.
Value fail(const char* error_message);

}  // namespace korvane
