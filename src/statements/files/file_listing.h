// FILES and its alias DIR: listing the names in a directory.
#pragma once

#include "program/token.h"

namespace korvane {

// FILES [pattern$][,S][,W][,P]: S lists subdirectories too, W prints several names a line, P pauses after
// each page. Raises "Type mismatch", "Expected S, W or P" and "Syntax Error". A directory that is missing or
// unreadable prints nothing and is no error.
void do_files(Cursor& cursor);

}  // namespace korvane
