// Bitmaps: 32 slots that LOADBMP fills from BMP files and BITBLT copies to the screen.
#pragma once

#include <array>
#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t bitmap_slot_count = 32;

struct BitmapSlot {
    // width * height words 0x00RRGGBB, row by row from the top, in the data arena
    const std::uint32_t* pixels;
    std::uint32_t width;
    std::uint32_t height;
    bool loaded;
    std::uint32_t clears;  // arenas.clears when it was loaded
};

struct Bitmaps {
    std::array<BitmapSlot, bitmap_slot_count> slots;
};
extern Bitmaps bitmaps;

// Start-up: no slot is loaded.
void initialize_bitmaps();

// The bitmap in a slot, or null when nothing is loaded there. A clear (RUN, CLEAR, NEW, LOAD) takes back the
// memory of all bitmaps, so a slot loaded before the last one counts as not loaded.
const BitmapSlot* find_bitmap(std::int64_t slot);

// LOADBMP slot, file$: loads an uncompressed BMP file of 24 or 32 bits a pixel into slot 0 to 31. A new load
// of the same slot takes new memory. Raises "Illegal function call" for a slot, size, depth or compression
// outside the supported ones, "File not found", "Bad file mode" for a file that is no BMP or ends early, and
// "Out of memory"; then the slot keeps what it held.
void do_loadbmp(Cursor& cursor);

// BITBLT slot, x, y[, transparent]: shows a bitmap with its top left corner at a pixel of the screen, without
// the pixels of the transparent colour (24 bits; palette numbers do not apply). It is clipped to the screen;
// the viewport does not apply. It writes the framebuffer only, not the back buffer, so POINT, PAINT and GET
// do not see it and scrolling does not carry it along; this is deliberate. A slot that is not loaded is
// "Illegal function call".
void do_bitblt(Cursor& cursor);

}  // namespace korvane
