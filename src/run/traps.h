// Traps: ON ERROR, ON BREAK, ERROR and RESUME, with the stack of handlers being run.
#pragma once

#include <cstdint>

#include "program/execution.h"
#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t max_trap_frames = 8;

enum class TrapKind : std::uint8_t { ERROR = 1, BREAK = 2 };

struct TrapFrame {
    TrapKind kind;
    Position at;  // of the failing statement, or of the statement before which the break came
};

struct Traps {
    std::int64_t error_target;  // line number of ON ERROR GOTO; 0 is off
    std::int64_t break_target;  // of ON BREAK GOTO
    std::uint32_t count;
    TrapFrame frames[max_trap_frames];
};
extern Traps traps;

// Both targets off, no handler running.
void clear_traps();

// True when a handler of the kind is being run, so that another event of the kind is not trapped.
bool handler_active(TrapKind kind);

// Raises "Too many nested handlers" and gives false when 8 frames are stacked.
bool push_trap_frame(TrapKind kind, Position at);

// ERROR n: raises "User-defined error" for 1 to 255 whatever n means otherwise (deliberate), and ERR gives n.
// Other numbers are "Illegal function call".
void do_error(Cursor& cursor);

// RESUME [NEXT | 0 | line] leaves a handler. Raises "RESUME without error". Message and code stay for ERR.
void do_resume(Cursor& cursor);

}  // namespace korvane
