// Assignments to scalars.
#pragma once

#include "fast/expression.h"
#include "program/token.h"

namespace korvane::fast {

// The handler of an assignment to a scalar of the type whose "=" holds the value.
Execute scalar_handler(Type type, const Specialised& value);

}  // namespace korvane::fast
