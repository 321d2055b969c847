// Assignments of texts to variables and elements.
#pragma once

#include "fast/expression.h"
#include "fast/statement.h"

namespace korvane::fast {

// The handlers of an assignment whose "=" holds a text as its right side: to a scalar, whose storage "="
// holds in left_operand, and to an element, whose bracket holds "=" in next.
Execute choose_text_assignment(const Side& value);
Execute choose_text_element_assignment(const Side& value);

}  // namespace korvane::fast
