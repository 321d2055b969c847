// Where execution stands: shared by the command loop, the run loop, control flow, traps and debugging aids.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t direct_line = 0xFFFFFFFF;  // line index of the direct line; also "no line"
inline constexpr std::uint32_t gone_line = 0xFFFFFFFE;    // line index of a line that the program has lost
inline constexpr std::uint32_t max_line_number = 4294967294;

struct Execution {
    std::uint32_t line;             // current line index
    std::uint32_t gone_number;      // number of the current line while `line` is gone_line
    Token* tokens;                  // current token array
    std::uint32_t record;           // where a jump wants execution to go on, in the current line
    std::uint32_t statement_start;  // record at which the statement being executed began
    bool program_running;           // on only inside RUN and CONT
    bool stop;                      // makes the run loop return
    bool jumped;                    // a transfer of control took place; cleared before each statement
    bool then_part;                 // inside the THEN part of a true IF: an ELSE ends the line
    bool break_seen;                // Escape ended the run
    std::uint32_t break_line;       // line number at which it did
    bool can_continue;              // CONT may resume at `continue_at`
    Position continue_at;
    // First statement of a THEN part, whose start is that of its IF. It is kept from one statement to the
    // next only: the run loop forgets it whenever execution arrives somewhere other than from the statement
    // in front.
    Token* kept_token;
    Token* kept_start;              // that IF
    std::uint64_t statement_count;  // statements dispatched; the keyboard is polled every 256
};
extern Execution execution;

struct ExecutionBuffer {
    Token direct[max_token_records];  // the direct line being executed
    std::uint32_t direct_count;
    Token tokens[max_token_records];  // a program line for which the token cache had no room
};
extern ExecutionBuffer execution_buffer;

// The record index at which `cursor` stands in the current token array.
inline std::uint32_t record_of(const Token* cursor) {
    return static_cast<std::uint32_t>(cursor - execution.tokens);
}

}  // namespace korvane
