// Assignments of texts to variables and elements.
#pragma once

#include "fast/nodes.h"
#include "fast/statement.h"

namespace korvane::fast {

// The handlers of an assignment whose "=" will hold a text: to a scalar, and to an element, whose bracket
// will lead to "=".
[[gnu::cold]] Execute choose_text_assignment(const Node& value);
[[gnu::cold]] Execute choose_text_element_assignment(const Node& value);

}  // namespace korvane::fast
