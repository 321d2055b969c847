// Array elements. The bracket of an element and its commas hold a subscript each as their right side, and the
// bracket the array (ElementRecord).
#pragma once

#include <cstdint>

#include "fast/step.h"

namespace korvane::fast {

// The address of the element of an array of the type whose "(" is `bracket`; null when a subscript is out
// of range.
std::uint8_t* element_address(const Token* bracket, Type type);

// The same for an array of texts, which is faster.
std::uint8_t* text_element_address(const Token* bracket);

// The step that begins a chain with the value of an element whose bracket has been bound, in the domain of
// its type (a SINGLE or integer element may also begin a real chain).
[[gnu::cold]] void set_element_step(Token* bracket, Type type, Domain domain);

}  // namespace korvane::fast
