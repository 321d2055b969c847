// Built-in functions of keyboard, screen and files. Those with a Cursor read their own arguments from "(" on.
#pragma once

#include "numbers/value.h"
#include "program/token.h"

namespace korvane {

Value function_inkey();                    // one waiting key as a one-character string, or the empty string
Value function_csrlin();                   // cursor row from the top of the screen, from 1
Value function_pos(const Value& ignored);  // output column, from 1
Value function_tab(const Value& column);   // sends blanks and gives the empty string
Value function_spc(const Value& count);
Value function_point(const Value* arguments, int count);  // (x, y)

}  // namespace korvane
