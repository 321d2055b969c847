// Assignments to array elements.
#pragma once

#include "fast/expression.h"
#include "program/token.h"

namespace korvane::fast {

// The handler of an assignment to an element of an array of the type. The bracket behind the array's name
// holds the subscripts and leads to "=", which holds the value.
Execute element_handler(const Token* bracket, const Specialised& element, const Specialised& value);

}  // namespace korvane::fast
