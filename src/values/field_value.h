// Storing a field of text (a DATA item, an answer to INPUT, an item of a file) into a variable.
#pragma once

#include <string_view>

#include "values/text_number.h"
#include "values/variables.h"

namespace korvane {

// Stores the text with conversion to the place's type. A string takes it as it is. An integer place takes the
// integer form of a number exactly, else the rounded floating form; a floating place takes the floating form.
// Gives not_a_number, with nothing raised and nothing stored, for other text in a numeric place, and failed
// after an error
// ("Overflow", "Out of string space").
NumberReading store_field(const Reference& place, std::string_view text);

}  // namespace korvane
