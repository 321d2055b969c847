// The statement table: which handler executes a statement, by the kind of its first token.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "program/execution.h"
#include "program/token.h"

namespace korvane {

using StatementHandler = void (*)(Cursor& cursor);

// The handlers by token kind, kept as handlers by number and numbers by kind: a pointer and its relocation
// for each of the 256 kinds would take twice the room.
struct StatementHandlers {
    static constexpr std::size_t most = 96;

    std::array<StatementHandler, most> handlers;
    std::array<std::uint8_t, 256> numbers;

    StatementHandler operator[](std::uint8_t kind) const { return handlers[numbers[kind]]; }
};

// Every handler takes the cursor on the statement's first token and leaves it behind what it has read.
extern const StatementHandlers statement_handlers;

// Executes one statement at the cursor.
inline void dispatch_statement(Cursor& cursor) {
    ++execution.statement_count;
    statement_handlers[cursor->kind](cursor);
}

}  // namespace korvane
