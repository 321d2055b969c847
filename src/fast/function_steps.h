// Function calls: the bracket of a call holds the argument as its right side and begins a chain with
// the result.
#pragma once

#include <cstdint>
#include <string_view>

#include "fast/step.h"

namespace korvane {
struct BuiltInFunction;
struct UserFunction;
}  // namespace korvane

namespace korvane::fast {

// Reads the text of an ArgumentList, one argument after the other.
struct FunctionArguments {
    std::string_view rest;

    bool take(Type type);  // false when the function takes no such argument
    bool are_complete() const { return rest.empty() || rest.front() == '?'; }
};

// Whether a built-in function has a step and gives a number.
[[gnu::cold]] bool gives_number(std::string_view name);

// The type of its result, given the type of the last argument.
[[gnu::cold]] Type function_result(std::string_view name, Type argument);

// The type that a built-in function without arguments gives.
[[gnu::cold]] Type bare_function_result(std::string_view name);

// Whether evaluating the function changes what the next random number is.
[[gnu::cold]] bool draws_random(std::string_view name);

// Sets the step of a call, whose "(" is `bracket`; `last` is the type of the last argument. The bracket and
// its commas hold the arguments like subscripts.
[[gnu::cold]] void set_function_step(Token* bracket, const BuiltInFunction& function, Type last,
                                     Domain domain);

// Sets the step of a call of a user function. The bracket and its commas hold the arguments like subscripts;
// the function's head token holds its body as right side.
[[gnu::cold]] void set_user_function_step(Token* bracket, UserFunction* function, Domain domain);

}  // namespace korvane::fast
