// Steps of the text domain: concatenation and the functions that cut and make strings. They take string space
// exactly as the general evaluator does; when they fail, the statement gives back what was taken before it
// starts again.
#pragma once

#include <string_view>

#include "fast/step.h"

namespace korvane {
struct BuiltInFunction;
}

namespace korvane::fast {

// The left and right sides of "+" joined, in as many adjacent copies in string space; gives the last
// one taken.
Value joined(const Token* plus, unsigned copies);

// "+" between its left and right sides.
[[gnu::cold]] void set_concatenation_step(Token* at);

// Whether a built-in function has a step and gives a text.
[[gnu::cold]] bool gives_text(std::string_view name);

// Sets the step of a call of such a function. The bracket and its commas hold the arguments like subscripts;
// `last` is the type of the last one.
[[gnu::cold]] void set_text_function_step(Token* bracket, const BuiltInFunction& function, Type last);

}  // namespace korvane::fast
