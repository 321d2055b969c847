// File numbers in statements.
#pragma once

#include "files/file_table.h"
#include "program/token.h"

namespace korvane {

// A file number: an optional "#", then an expression from 1 to 15. Raises "Type mismatch" and "Bad file
// number", the latter also when an open file is wanted and the number is closed. Null after an error.
OpenFile* lookup_file(Cursor& cursor, bool must_be_open);

// The "#n," in front of the list of PRINT and WRITE: the cursor stands on the "#". Raises what lookup_file
// does, "Bad file mode" for a file opened for input, and "Expected ,". Null after an error.
OpenFile* parse_output_file(Cursor& cursor);

}  // namespace korvane
