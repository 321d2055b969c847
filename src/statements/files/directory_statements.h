// The statements that work on names: KILL, NAME, MKDIR, RMDIR and CHDIR.
#pragma once

#include "program/token.h"

namespace korvane {

// KILL file$: "Type mismatch", "File not found". At most 127 characters of the name are used.
void do_kill(Cursor& cursor);

// NAME old$ AS new$: "Type mismatch", "Expected AS", "File not found".
void do_name(Cursor& cursor);

// MKDIR path$: "Type mismatch", "Path not found" (empty text), "Path/File access error".
void do_mkdir(Cursor& cursor);

// RMDIR path$: as MKDIR. Whether a directory that is not empty is refused is the firmware's affair.
void do_rmdir(Cursor& cursor);

// CHDIR path$: "Type mismatch", "Path not found". A failure leaves the current directory as it was.
void do_chdir(Cursor& cursor);

}  // namespace korvane
