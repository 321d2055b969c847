// Assignments to scalars.
#pragma once

#include "fast/nodes.h"
#include "program/token.h"

namespace korvane::fast {

// The handler of an assignment to a scalar of the type, whose "=" will hold the value.
Execute scalar_handler(Type type, const Node& value);

}  // namespace korvane::fast
