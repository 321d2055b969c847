// POKE and PEEK of any width, at any 64-bit address. No address is checked, deliberately: reaching every byte
// of the machine is their purpose.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

// `bytes` (1, 2, 4 or 8) bytes at an address, least significant first, read one at a time; alignment is free.
std::uint64_t peek_memory(std::uint64_t address, std::uint32_t bytes);
void poke_memory(std::uint64_t address, std::uint64_t value, std::uint32_t bytes);

// POKE address, value and its wider forms. The value of the narrow forms must lie in 0 to 2^w - 1 ("Illegal
// function call"); POKE64 takes every INT64. Raises "Expected ," and "Type mismatch".
// A failed POKE writes nothing.
void do_poke(Cursor& cursor);
void do_poke16(Cursor& cursor);
void do_poke32(Cursor& cursor);
void do_poke64(Cursor& cursor);

}  // namespace korvane
