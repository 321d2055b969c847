// The built-in functions on files: EOF, LOC, LOF and INPUT$. The cursor stands on "(".
#pragma once

#include "numbers/value.h"
#include "program/token.h"

namespace korvane {

// EOF(n): -1 when nothing more can be read (input), when the last GET came up short (random), and always for
// output and append; else 0.
Value function_eof(Cursor& cursor);

// LOC(n): blocks of 128 bytes read or written since OPEN, a started block counted; for a random file the
// number of the last record.
Value function_loc(Cursor& cursor);

// LOF(n): the file's length in bytes, output that waits in its buffer included. Raises "Disk I/O error".
Value function_lof(Cursor& cursor);

// INPUT$(count[, [#]n]): exactly `count` bytes of a file, or that many keys without echo. Escape ends the
// wait for keys: the run is broken at this statement, and the result is what was typed. Raises "Illegal
// function call", "Bad file mode" and "Input past end". All four raise "Bad file number" and "Type mismatch".
Value function_input_string(Cursor& cursor);

}  // namespace korvane
