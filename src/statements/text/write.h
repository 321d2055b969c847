// WRITE: values separated by commas, strings in quotes, in a form that INPUT can read back.
#pragma once

#include "program/token.h"

namespace korvane {

// WRITE [#n,] list. There is no @n form.
void do_write(Cursor& cursor);

}  // namespace korvane
