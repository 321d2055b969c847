// DEFINT, DEFLNG, DEFI64, DEFSNG, DEFDBL and DEFSTR: the types of unsuffixed names.
#pragma once

#include "program/token.h"

namespace korvane {

void do_deftype(Cursor& cursor);

}  // namespace korvane
