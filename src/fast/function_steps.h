// Function calls: the bracket of a call holds the argument as its right side and begins a chain with the
// result.
#pragma once

#include <cstdint>
#include <string_view>

#include "fast/step.h"

namespace korvane {
struct UserFunction;
}

namespace korvane::fast {

// The domain of a built-in function's argument, and the type of its result, given the argument's type. False
// when the function has no step or does not take such an argument.
bool function_result(std::string_view name, Type argument, Type& result);

// Sets the step of a call with one argument, whose "(" is `bracket`.
void set_function_step(Token* bracket, std::string_view name, Domain domain);

// Sets the step of a call of a user function. The bracket and its commas hold the arguments like subscripts;
// the function's head token holds its body as right side. All parameters are numeric.
void set_user_function_step(Token* bracket, UserFunction* function, Domain domain);

}  // namespace korvane::fast
