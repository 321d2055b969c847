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

// What makes a new text of texts and numbers, for the steps and for native code. Each gives a Value of type
// NONE when there is no room for it, or a number is out of range.
Value middle_of(Value text, std::int64_t start, std::int64_t length);
Value end_of(Value text, std::int64_t length);
Value character_of(std::int64_t code);
Value join(Value left, Value right);

// Make a text the content of a variable or an element; false when there is no room. A joined one lies in
// string space twice then, as the general evaluator leaves it.
bool assign_copy(std::uint8_t* place, Value text);
bool assign_joined(std::uint8_t* place, Value left, Value right);

// What "+" makes of its left and right sides: as many adjacent copies in string space. Gives the last one
// taken.
Value joined(const Token* plus, unsigned copies);

// What MID$ takes of a text by the arguments that its bracket and commas hold, where the text has it.
Value middle_piece(const Token* bracket);

// "+" between its left and right sides.
[[gnu::cold]] void set_concatenation_step(Token* at);

// Whether a built-in function has a step and gives a text.
[[gnu::cold]] bool gives_text(std::string_view name);

// Sets the step of a call of such a function. The bracket and its commas hold the arguments like subscripts;
// `last` is the type of the last one.
[[gnu::cold]] void set_text_function_step(Token* bracket, const BuiltInFunction& function, Type last);

}  // namespace korvane::fast
