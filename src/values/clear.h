// The clear operation: the common core of CLEAR, RUN, NEW and LOAD.
#pragma once

namespace korvane {

// Gives the whole data arena back: a new clear generation, no variables, arrays, strings or user functions,
// all default types DOUBLE, array base 0, an empty COMMON list, no pending error. The program stays.
void clear_data();

}  // namespace korvane
