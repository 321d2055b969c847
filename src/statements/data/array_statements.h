// DIM, ERASE and OPTION BASE.
#pragma once

#include "program/token.h"

namespace korvane {

// DIM name(bound[, bound...])[, ...]. Raises "Expected name", "Duplicate definition", "Illegal dimension",
// "Too many dimensions", "Too many variables" and "Out of memory"; items in front of one
// that fails stay dimensioned.
void do_dim(Cursor& cursor);

// ERASE name[, name...]: the memory is not given back before the next clear (deliberate). Raises "Expected
// array" and "Illegal function call".
void do_erase(Cursor& cursor);

// OPTION BASE 0 | 1, while there is no array: "Duplicate definition" else.
void do_option(Cursor& cursor);

}  // namespace korvane
