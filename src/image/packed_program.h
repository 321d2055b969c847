// The program packed behind a standalone image: its layout, how start-up finds it and how it is loaded.
//
//   image file | "BAS2" | u32 line count | line records | "KORVANE2-PACKED!" | u64 packed length
//   line record: u32 line number, u32 text length, text
//
// All integers are little-endian and nothing is aligned. The packed length counts from "BAS2" to the trailer,
// which is the last 24 bytes of the file. The firmware's loader ignores all of it:
// it lies behind the last section.
#pragma once

#include <cstdint>

namespace korvane {

inline constexpr char packed_magic[] = "BAS2";
inline constexpr char packed_trailer_magic[] = "KORVANE2-PACKED!";
inline constexpr std::uint64_t packed_header_size = 8;
inline constexpr std::uint64_t packed_line_head_size = 8;
inline constexpr std::uint64_t packed_trailer_size = 24;

struct PackedProgram {
    bool present;          // the running image carries a packed program
    std::uint64_t start;   // its offset in the image file
    std::uint64_t length;  // its packed length in bytes
};
extern PackedProgram packed_program;

// Looks for the trailer in the running image's own file and notes what it says. Any failure means that there
// is none.
bool detect_packed_program();

// Replaces the program lines by the packed ones. False when there is no packed program or it is damaged.
bool load_packed_program();

}  // namespace korvane
