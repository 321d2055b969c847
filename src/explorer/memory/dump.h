#pragma once

#include <cstdint>

#include "explorer/command.h"

namespace korvane {

// Where a bare `M` goes on. Survives leaving and re-entering the explorer.
struct DumpContinuation {
    bool made;              // a dump has been made
    std::uint64_t address;  // just past the last dump
    std::uint64_t length;   // of the last dump, in bytes
};
extern DumpContinuation dump_continuation;

// Start-up: no dump has been made.
void initialize_dump();

// `M [address [length]]`: dumps memory that the memory map shows as readable,
// 256 bytes unless told otherwise.
CommandEnd do_dump(WordReader& arguments);

// `M! [address [length]]`: the same without looking at the memory map, at the user's risk.
CommandEnd do_forced_dump(WordReader& arguments);

}  // namespace korvane
