"""PNG pictures of 8 bits a component, RGB, written plainly and read back."""

import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"
RGB_FORM = (8, 2, 0, 0, 0)  # bit depth, colour type, compression, filter, interlace


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def write_png(path, width, height, pixels):
    """Writes width * height * 3 bytes, rows from the top."""
    rows = b"".join(b"\0" + pixels[y * width * 3 : (y + 1) * width * 3] for y in range(height))
    head = struct.pack(">IIBBBBB", width, height, *RGB_FORM)
    with open(path, "wb") as file:
        file.write(
            SIGNATURE + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")
        )


def read_png(path):
    """(width, height, RGB bytes) of a picture that write_png wrote."""
    with open(path, "rb") as file:
        data = file.read()
    assert data.startswith(SIGNATURE)
    at, compressed = len(SIGNATURE), b""
    while at < len(data):
        (length,) = struct.unpack_from(">I", data, at)
        kind, body = data[at + 4 : at + 8], data[at + 8 : at + 8 + length]
        if kind == b"IHDR":
            width, height, *form = struct.unpack(">IIBBBBB", body)
            assert tuple(form) == RGB_FORM
        if kind == b"IDAT":
            compressed += body
        at += 12 + length
    rows = zlib.decompress(compressed)
    stride = width * 3 + 1
    assert len(rows) == stride * height and not any(rows[::stride])
    return width, height, b"".join(rows[y * stride + 1 : (y + 1) * stride] for y in range(height))
