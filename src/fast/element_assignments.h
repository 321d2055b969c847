// Assignments to array elements.
#pragma once

#include "fast/nodes.h"
#include "program/token.h"

namespace korvane::fast {

// The handler of an assignment to an element. The bracket behind the array's name will hold the subscripts
// and lead to "=", which will hold the value.
[[gnu::cold]] Execute element_handler(const Node& element, const Node& value);

}  // namespace korvane::fast
