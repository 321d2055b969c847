// LOAD, SAVE and MERGE: programs kept on the volume as text. File names are cut to 127 characters.
#pragma once

#include "program/token.h"

namespace korvane {

// LOAD file$: ".bas" is added to a name without a dot. Closes all files, clears variables and program, reads
// the text and ends a run. Raises "Type mismatch", "Bad file name" (too long for ".bas") and "File not found"
// with nothing changed; what read_program_text() raises leaves the lines read so far.
void do_load(Cursor& cursor);

// SAVE file$[,A]: the name is taken as given; the program is always saved as text. Raises "Type mismatch" and
// "Bad file name". Write errors are not reported.
void do_save(Cursor& cursor);

// MERGE file$: enters the file's lines into the program, the name as given. "Illegal direct" while a program
// runs, "Type mismatch", "File not found" and what read_program_text() raises.
void do_merge(Cursor& cursor);

}  // namespace korvane
