// Text items that become the content of a variable: the items of READ and of INPUT in all its forms.
#pragma once

#include <string_view>

#include "values/variables.h"

namespace korvane {

// Stores an item's text in a place: a STRING takes the text; an integer type takes the exact integer or else
// the rounded floating number; SINGLE and DOUBLE take the floating number. False when the text is no number,
// which raises nothing; raises "Overflow" for a number out of range and "Out of string space".
bool store_item(const Reference& target, std::string_view item);

}  // namespace korvane
