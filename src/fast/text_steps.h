// Steps of the text domain: concatenation and the functions that cut and make strings. They take string space
// exactly as the general evaluator does; when they fail, the statement gives back what was taken before it
// starts again.
#pragma once

#include <string_view>

#include "fast/step.h"

namespace korvane::fast {

// "+" between its left and right sides.
void set_concatenation_step(Token* at);

// What a function of the name takes: 't' a text and 'n' a number for each argument, '?' before optional ones;
// empty for functions that have no step. The bracket and its commas hold the arguments like subscripts.
std::string_view text_function_arguments(std::string_view name);

// Sets the step of such a call.
void set_text_function_step(Token* bracket, std::string_view name);

}  // namespace korvane::fast
