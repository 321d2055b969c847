// Assignments of texts to variables and elements.
#pragma once

#include "fast/expression.h"
#include "fast/statement.h"

namespace korvane::fast {

// The handlers of an assignment whose "=" holds a text: to a scalar, and to an element, whose bracket
// leads to "=".
Execute choose_text_assignment(const Specialised& value);
Execute choose_text_element_assignment(const Specialised& value);

}  // namespace korvane::fast
