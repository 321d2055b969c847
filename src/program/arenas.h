// The two memory arenas and their moving boundaries.
//
// The program arena holds program text and token caches. The data arena holds, from the bottom up, the
// variable table (a fixed band of 4096 entries of 64 bytes) and array blocks, and from the top down string
// bytes. Nothing is given back piecemeal; only clear_variables() reclaims the data arena.
//
//   LOMEM = VARTABLE      LOMEM + 256 KiB       FREEBOT ->           <- FREETOP        HIMEM
//   | variable table      | array blocks        | free               | string bytes    |
#pragma once

#include <cstdint>

namespace korvane {

inline constexpr std::uint64_t page_size = 4096;
inline constexpr std::uint64_t program_arena_pages = 4096;
inline constexpr std::uint64_t program_arena_size = program_arena_pages * page_size;  // 16 MiB
inline constexpr std::uint64_t variable_table_size = 0x40000;

// Addresses, named as the landmarks under which BASIC and the machine explorer show them.
struct Arenas {
    std::uint8_t* CODEBASE;    // start of the program arena
    std::uint8_t* CODEEND;     // its end
    std::uint8_t* VARTABLE;    // start of the variable table
    std::uint8_t* LOMEM;       // start of the data arena
    std::uint8_t* FREEBOT;     // first free byte; low allocations move it up
    std::uint8_t* FREETOP;     // lowest byte of the strings; string allocations move it down
    std::uint8_t* HIMEM;       // end of the data arena
    std::uint32_t generation;  // clear generation: counts the events after which cached references are stale
    std::uint32_t clears;  // clears alone: counts the events after which every block handed out is taken back
};
extern Arenas arenas;

// Start-up: takes 16 MiB for the program arena. False when the firmware has no such memory.
bool allocate_program_arena();

// Start-up: takes the largest free conventional region whole as the data arena; when its own address is
// refused, as many pages anywhere. False when the memory map cannot be read.
bool allocate_data_arena();

// Sets the moving boundaries to those of an empty data arena and starts a new clear generation.
void reset_data_arena();

// Free data memory in bytes: FREETOP - FREEBOT, or 0 should they ever have crossed.
std::uint64_t free_data_bytes();

// A block of `bytes` rounded up to a multiple of 8 from FREEBOT upward, or null when it does not fit. Raises
// nothing: the caller has its own message.
std::uint8_t* allocate_low(std::uint64_t bytes);

// `bytes` bytes, unaligned, from FREETOP downward. 0 bytes give FREETOP itself and change nothing. When they
// do not fit: raises "Out of string space" and gives null.
std::uint8_t* allocate_string(std::uint64_t bytes);

}  // namespace korvane
