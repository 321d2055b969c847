// Where the numbers of lines lead.
#pragma once

#include "program/token.h"

namespace korvane::fast {

// The first token of the line that a number literal names, which the literal keeps; null when the line does
// not exist or is left to the general handler, or when it does not stay in the token cache.
Token* target_of(Token* literal);

}  // namespace korvane::fast
