"""Reads the text of a console screen back from its pixels, by the very font the image is built with."""

import collections
import gzip

import pcf_font
import programs

FONT_FILE = "/usr/share/fonts/X11/misc/ter-u16n_ibm437.pcf.gz"
CELL_WIDTH = 8
CELL_HEIGHT = 16
FULL_BLOCK = 219
UNKNOWN = "\ufffd"

# The graphic characters that code page 437 has at the control codes.
CONTROL_GLYPHS = "\0☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼"


def code_to_text(code):
    if code in pcf_font.BLANK_CODES:
        return " "
    if code < 32:
        return CONTROL_GLYPHS[code]
    return "⌂" if code == 127 else bytes([code]).decode("cp437")


def glyph_texts():
    """Maps each glyph's 16 row bytes to its character; of codes that look alike the ASCII one counts."""
    with gzip.open(programs.require_file(FONT_FILE, "xfonts-terminus-dos"), "rb") as file:
        glyphs = pcf_font.read_glyphs(file.read())
    pcf_font.complete_cells(glyphs)
    by_glyph = {}
    for code in sorted(range(256), key=lambda code: not 32 <= code < 127):
        by_glyph.setdefault(bytes(glyphs[code]), code_to_text(code))
    return by_glyph


class Screen:
    """One picture of the screen: its size, its pixels and, where cells hold glyphs, its text."""

    glyphs = None
    cell_cache = {}
    row_cache = {}  # the rows of the last picture that was read: most of the next one's are the same

    def __init__(self, ppm):
        """Takes a binary PPM picture (as QEMU's screendump writes it)."""
        magic, size, depth, self.pixels = ppm.split(b"\n", 3)
        if magic != b"P6" or depth != b"255":
            raise ValueError("not a 24-bit binary PPM picture")
        self.width, self.height = map(int, size.split())
        if len(self.pixels) != self.width * self.height * 3:
            raise ValueError("the picture is cut short")
        if Screen.glyphs is None:
            Screen.glyphs = glyph_texts()
        self.background = self.commonest_corner()
        self.texts = None

    def commonest_corner(self):
        """The colour that most cells have at their upper left, where nearly every glyph shows its background."""
        stride = 3 * self.width
        corners = collections.Counter(
            self.pixels[start : start + 3]
            for line in range(0, self.height, CELL_HEIGHT)
            for start in range(line * stride, (line + 1) * stride, 3 * CELL_WIDTH)
        )
        return corners.most_common(1)[0][0]

    def pixel(self, x, y):
        """The colour at (x, y) as 0xRRGGBB."""
        at = 3 * (y * self.width + x)
        return int.from_bytes(self.pixels[at : at + 3], "big")

    def cell(self, row, column):
        """The character in a text cell; UNKNOWN where its pixels are no glyph in two colours."""
        start = 3 * (row * CELL_HEIGHT * self.width + column * CELL_WIDTH)
        stride = 3 * self.width
        cell = b"".join(
            self.pixels[start + y * stride : start + y * stride + 3 * CELL_WIDTH] for y in range(CELL_HEIGHT)
        )
        key = (cell, self.background)
        text = Screen.cell_cache.get(key)
        if text is None:
            text = Screen.cell_cache[key] = self.recognise(cell)
        return text

    def recognise(self, cell):
        pixels = [cell[i : i + 3] for i in range(0, len(cell), 3)]
        colours = sorted(set(pixels), key=pixels.count, reverse=True)
        if len(colours) > 2:
            return UNKNOWN
        if len(colours) == 1:
            return " " if colours[0] == self.background else "█"
        # The screen's background is the cell's too, else the colour that covers more of the cell.
        backgrounds = sorted(colours, key=lambda colour: colour != self.background)
        for background in backgrounds:
            bits = "".join("0" if pixel == background else "1" for pixel in pixels)
            text = Screen.glyphs.get(int(bits, 2).to_bytes(CELL_HEIGHT, "big"))
            if text is not None:
                return text
        return UNKNOWN

    def row(self, row):
        """One row of text, trailing blanks trimmed."""
        return "".join(self.cell(row, column) for column in range(self.width // CELL_WIDTH)).rstrip()

    def rows(self):
        """All rows of text, trailing blanks trimmed; a waiting editor's cursor shows as a full block."""
        if self.texts is None:
            size = 3 * CELL_HEIGHT * self.width
            read = {}
            self.texts = []
            for row in range(self.height // CELL_HEIGHT):
                key = (self.width, self.background, self.pixels[row * size : (row + 1) * size])
                text = read.get(key)
                if text is None:
                    text = read[key] = Screen.row_cache[key] if key in Screen.row_cache else self.row(row)
                self.texts.append(text)
            Screen.row_cache = read
        return list(self.texts)

    def text(self):
        """The rows down to the last that is not blank, each ended by a line feed."""
        return "\n".join(self.rows()).rstrip() + "\n"
