// The console font: code page 437 in 8x16 pixels.
#ifndef KORVANE_SCREEN_FONT_H
#define KORVANE_SCREEN_FONT_H

#include <cstdint>

namespace korvane {

constexpr std::uint32_t glyph_width = 8;
constexpr std::uint32_t glyph_height = 16;

// The 256 glyphs, indexed by the full 8-bit character code. Byte i of a glyph is pixel row i, top row first;
// bit 7 is the leftmost pixel and bit 0 the rightmost. Codes 0, 32 and 255 are blank; the shades (176 to
// 178), the blocks (219 to 223) and box drawing join without gaps between cells.
//
// Generated at build time from Terminus Font (SIL Open Font License 1.1, see LICENSE.font.txt).
extern const std::uint8_t font_glyphs[256][16];

}  // namespace korvane

#endif
