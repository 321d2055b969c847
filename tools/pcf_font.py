#!/usr/bin/env python3
"""Turns an 8x16 console font in code page 437 order (PCF, gzip allowed) into the interpreter's glyph table.

usage: pcf_font.py FONT.pcf[.gz] OUTPUT.cpp

The output defines korvane::font_glyphs, declared in src/screen/font.h: 256 glyphs of 16 bytes, one byte a pixel
row, bit 7 the leftmost pixel.
"""

import gzip
import struct
import sys

WIDTH = 8
HEIGHT = 16

# Table types and format bits of the X11 Portable Compiled Format.
PCF_METRICS = 1 << 2
PCF_BITMAPS = 1 << 3
PCF_BDF_ENCODINGS = 1 << 5
PCF_GLYPH_PAD_MASK = 3
PCF_BYTE_MSB = 1 << 2
PCF_BIT_MSB = 1 << 3
PCF_SCAN_UNIT_MASK = 3 << 4
PCF_COMPRESSED_METRICS = 0x100
NO_GLYPH = 0xFFFF


class PcfFile:
    """The tables of a PCF file, each read in the byte order that its own format word states."""

    def __init__(self, data):
        if data[:4] != b"\x01fcp":
            raise ValueError("not a PCF font")
        (count,) = struct.unpack_from("<I", data, 4)
        self.tables = {}
        for i in range(count):
            kind, table_format, size, offset = struct.unpack_from("<4I", data, 8 + 16 * i)
            self.tables[kind] = (table_format, data[offset : offset + size])

    def table(self, kind):
        """(format, byte order prefix of struct, bytes) of a table."""
        table_format, data = self.tables[kind]
        return table_format, ">" if table_format & PCF_BYTE_MSB else "<", data

    def encoding(self):
        """Maps each character code to its glyph number."""
        _, order, data = self.table(PCF_BDF_ENCODINGS)
        first_low, last_low, first_high, last_high, _ = struct.unpack_from(order + "5H", data, 4)
        if first_high != 0 or last_high != 0:
            raise ValueError("not a single-byte font")
        codes = range(first_low, last_low + 1)
        numbers = struct.unpack_from(f"{order}{len(codes)}H", data, 14)
        return {code: number for code, number in zip(codes, numbers) if number != NO_GLYPH}

    def metrics(self):
        """(left bearing, right bearing, ascent, descent) of each glyph."""
        table_format, order, data = self.table(PCF_METRICS)
        result = []
        if table_format & PCF_COMPRESSED_METRICS:
            (count,) = struct.unpack_from(order + "H", data, 4)
            for i in range(count):
                left, right, _, ascent, descent = (b - 0x80 for b in data[6 + 5 * i : 11 + 5 * i])
                result.append((left, right, ascent, descent))
        else:
            (count,) = struct.unpack_from(order + "I", data, 4)
            for i in range(count):
                left, right, _, ascent, descent, _ = struct.unpack_from(order + "5hH", data, 8 + 12 * i)
                result.append((left, right, ascent, descent))
        return result

    def rows(self, number, metrics):
        """The pixel rows of a glyph as integers of (right - left) bits, the leftmost pixel highest."""
        table_format, order, data = self.table(PCF_BITMAPS)
        if table_format & PCF_SCAN_UNIT_MASK or not table_format & PCF_BIT_MSB:
            raise ValueError("only bitmaps of single bytes with the leftmost pixel highest are understood")
        (count,) = struct.unpack_from(order + "I", data, 4)
        (offset,) = struct.unpack_from(order + "I", data, 8 + 4 * number)
        bits_start = 8 + 4 * count + 16
        left, right, ascent, descent = metrics[number]
        width = right - left
        pad = 1 << (table_format & PCF_GLYPH_PAD_MASK)
        stride = ((width + 7) // 8 + pad - 1) // pad * pad
        rows = []
        for y in range(ascent + descent):
            start = bits_start + offset + y * stride
            value = int.from_bytes(data[start : start + stride], "big")
            rows.append(value >> (8 * stride - width))
        return rows


def read_glyphs(data):
    """256 glyphs of 16 row bytes; a code that the font lacks is blank."""
    font = PcfFile(data)
    encoding = font.encoding()
    metrics = font.metrics()
    ascent = max(m[2] for m in metrics)
    glyphs = []
    for code in range(256):
        glyph = [0] * HEIGHT
        if code in encoding:
            number = encoding[code]
            left, right, glyph_ascent, _ = metrics[number]
            if left < 0 or right > WIDTH:
                raise ValueError(f"glyph {code} is wider than {WIDTH} pixels")
            for y, row in enumerate(font.rows(number, metrics)):
                line = ascent - glyph_ascent + y
                if not 0 <= line < HEIGHT:
                    raise ValueError(f"glyph {code} is higher than {HEIGHT} pixels")
                glyph[line] = row << (WIDTH - right)
        glyphs.append(glyph)
    return glyphs


BLANK_CODES = (0, 32, 255)
DOUBLE_NOTE = [0, 0, 0x3E, 0x22, 0x3E, 0x22, 0x22, 0x22, 0x22, 0x26, 0x26, 0xC0, 0, 0, 0, 0]


def complete_cells(glyphs):
    """Fills the font's gaps and makes exact what programs draw areas with: blanks, shades and block cells.

    Text of a full screen is drawn without gaps, so these must tile the cell whatever the font's designer chose;
    the font keeps its "missing glyph" box at code 0, which must be blank on this console.
    """
    for code in BLANK_CODES:
        glyphs[code] = [0x00] * HEIGHT
    # Terminus leaves two codes out: the bullet, which is code 8 inside out, and the double note.
    glyphs[7] = [row ^ 0xFF for row in glyphs[8]]
    glyphs[14] = DOUBLE_NOTE
    half = HEIGHT // 2
    glyphs[176] = [0x88, 0x22] * half
    glyphs[177] = [0xAA, 0x55] * half
    glyphs[178] = [0xEE, 0xBB] * half
    glyphs[219] = [0xFF] * HEIGHT
    glyphs[220] = [0x00] * half + [0xFF] * half
    glyphs[221] = [0xF0] * HEIGHT
    glyphs[222] = [0x0F] * HEIGHT
    glyphs[223] = [0xFF] * half + [0x00] * half


def cpp_source(glyphs):
    lines = [
        "// Generated by tools/pcf_font.py; do not edit.",
        '#include "screen/font.h"',
        "",
        "namespace korvane {",
        "",
        "const std::uint8_t font_glyphs[256][16] = {",
    ]
    for code, glyph in enumerate(glyphs):
        lines.append("    {" + ", ".join(f"0x{row:02x}" for row in glyph) + f"}},  // {code}")
    lines += ["};", "", "}  // namespace korvane", ""]
    return "\n".join(lines)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    path, output = sys.argv[1:]
    try:
        with (gzip.open if path.endswith(".gz") else open)(path, "rb") as file:
            glyphs = read_glyphs(file.read())
    except (OSError, ValueError, struct.error) as error:
        sys.exit(f"pcf_font.py: {path}: {error}")
    complete_cells(glyphs)
    with open(output, "w", encoding="ascii") as file:
        file.write(cpp_source(glyphs))


if __name__ == "__main__":
    main()
