// PRINT USING: expressions printed by the fields of a format.
#pragma once

#include "program/token.h"

namespace korvane {

// The rest of PRINT USING format$; expressions, from USING on, up to the end of the list. The line end is
// sent here too, unless the list ends with ";" or ",". Raises "Type mismatch" for a format that is no string
// and for a value that does not suit its field,
// and "Syntax error" when neither ";" nor "," follows the format.
void print_formatted(Cursor& cursor);

}  // namespace korvane
