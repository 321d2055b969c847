// The statement table: which handler executes a statement, by the kind of its first token.
#pragma once

#include <array>

#include "core/token.h"

namespace korvane {

using StatementHandler = void (*)(Cursor& cursor);

// Every handler takes the cursor on the statement's first token and leaves it behind what it has read.
extern const std::array<StatementHandler, 256> statement_handlers;

}  // namespace korvane
