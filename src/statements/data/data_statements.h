// DATA, READ and RESTORE.
#pragma once

#include "program/token.h"

namespace korvane {

// DATA is passed over when it is reached.
void do_data(Cursor& cursor);

// READ variable[, variable...]. Raises "Out of DATA", "Type mismatch" for an item that is no number,
// "Overflow"; targets read before an error stay assigned.
void do_read(Cursor& cursor);

// RESTORE [line]. A line that does not exist is "Undefined line number"; reading goes on with the first DATA
// from it on.
void do_restore(Cursor& cursor);

}  // namespace korvane
