// The random numbers of RND and RANDOMIZE: a 24-bit linear congruential generator.
#pragma once

#include <cstdint>

#include "numbers/value.h"

namespace korvane {

struct RandomState {
    std::uint32_t seed;  // 24 bits
    double last;         // the last result, 0 <= last < 1
};
extern RandomState random_state;

// The state at start-up: seed hexadecimal 50000, last result 0.
void reset_random();

// RND without an argument: advances the seed; a SINGLE from 0 to below 1.
Value next_random();

// RND(x): advances for x > 0, gives the last result again for 0, restarts from x truncated toward zero for x
// < 0. A string raises "Type mismatch", a number outside the INT64 range (or a NaN) "Overflow".
Value random_for(const Value& argument);

// RANDOMIZE n: reseeds from the low 16 bits of n. The last result stays.
void randomize(std::int64_t n);

}  // namespace korvane
