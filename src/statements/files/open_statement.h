// OPEN in its two forms, and CLOSE.
#pragma once

#include "program/token.h"

namespace korvane {

// OPEN mode$, [#]n, file$[, reclen]
// OPEN file$ [FOR mode] AS [#]n [LEN = reclen]
// Without a mode the second form opens a random file. Raises "Type mismatch", "Bad file mode", "Bad file
// number", "File already open", "Bad record length", "File not found" (input), "Bad file name" (other modes),
// "Expected ,", "Expected AS" and "Expected =".
void do_open(Cursor& cursor);

// CLOSE [[#]n[, [#]n...]]: a number that is not open is accepted. Without numbers nothing is closed. Raises
// "Type mismatch" and "Bad file number".
void do_close(Cursor& cursor);

}  // namespace korvane
