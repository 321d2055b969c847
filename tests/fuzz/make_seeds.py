#!/usr/bin/env python3
"""Writes inputs to begin with, for every target of the fuzzer: what the transcripts type, the examples, random sessions
about each theme, well-formed tables.

usage: make_seeds.py FOLDER    writes FOLDER/TARGET/NAME
"""

import pathlib
import re
import struct
import sys

from themes import THEMES, make_session

ROOT = pathlib.Path(__file__).resolve().parents[2]
KEYS = {
    "ESC": b"\x1b", "UP": b"\x01", "DOWN": b"\x02", "RIGHT": b"\x03", "LEFT": b"\x04", "HOME": b"\x05", "END": b"\x06",
    "INS": b"\x07", "DEL": b"\x7f", "PGUP": b"", "PGDN": b"", "BS": b"\x08", "TAB": b"\x09", "ENTER": b"\n",
    "LBRACE": b"{",
}  # fmt: skip
LONGEST_SESSION = 1500
SESSIONS_ABOUT_EACH_THEME = 30


def keys(text):
    def one(match):
        name = match[1]
        return KEYS.get(name, b"").decode("latin-1")

    return re.sub(r"\{(\w+)\}", one, text).encode("latin-1", "ignore")


def sessions():
    """What each transcript types."""
    for file in sorted((ROOT / "tests/language").glob("*/*.txt")):
        typed = b""
        for line in file.read_text(encoding="latin-1").split("\n") + ["=== end"]:
            if line.startswith("=== "):
                if typed and len(typed) <= LONGEST_SESSION:
                    yield typed
                typed = b""
            elif line.startswith("> "):
                typed += line[2:].encode("latin-1") + b"\n"
            elif line.startswith("@keys "):
                typed += keys(line[6:])
            elif match := re.match(r"@at-poll (\d+) \{ESC\}", line):
                typed += bytes([28, int(match[1]) % 64])


def sessions_about_themes():
    for theme in THEMES:
        for seed in range(SESSIONS_ABOUT_EACH_THEME):
            yield "".join(line + "\n" for line in make_session(theme, seed) if not line.startswith("@")).encode("latin-1")


def utf16(text):
    return text.encode("utf-16-le")


def guid(text):
    first, second, third, *rest = text.split("-")
    head = struct.pack("<IHH", int(first, 16), int(second, 16), int(third, 16))
    return head + bytes.fromhex("".join(rest))


def gpt_disk():
    disk = bytearray(512 * 6)
    disk[450:466] = struct.pack("<BBBBIIBBBB", 0xEE, 0, 0, 0, 1, 0xFFFFFFFF, 0, 0, 0, 0)[:16]
    disk[510:512] = b"\x55\xaa"
    disk[512:520] = b"EFI PART"
    disk[584:600] = struct.pack("<QII", 2, 8, 128)
    entry = guid("C12A7328-F81F-11D2-BA4B-00A0C93EC93B") + bytes(16) + struct.pack("<QQQ", 34, 2081, 0)
    disk[1024 : 1024 + 56] = entry
    disk[1080 : 1080 + 12] = utf16("System")
    return bytes(disk)


def mbr_disk():
    disk = bytearray(512)
    for index, (kind, first, count) in enumerate([(0x0C, 1, 2047), (0x0F, 2048, 9999), (0x83, 0xFFFFFFFF, 0xFFFFFFFF)]):
        at = 446 + 16 * index
        disk[at + 4] = kind
        disk[at + 8 : at + 16] = struct.pack("<II", first, count)
    disk[510:512] = b"\x55\xaa"
    return bytes(disk)


def load_option(description, path, active=1):
    return struct.pack("<IH", active, len(path)) + utf16(description + "\0") + path + b"rest"


def path_node(kind, sub, body):
    return struct.pack("<BBH", kind, sub, len(body) + 4) + body


END = path_node(0x7F, 0xFF, b"")


def boot_variables():
    hard_drive = path_node(4, 1, struct.pack("<IQQ16sBB", 1, 2048, 4096, b"0123456789abcdef", 2, 2))
    file = path_node(4, 4, utf16("\\EFI\\debian\\grubx64.efi\0"))
    paths = [hard_drive + file + END, path_node(2, 1, struct.pack("<II", 0x0A0341D0, 0)) + path_node(1, 1, b"\0\x1f") + END]
    variables = b""
    for digit, path in zip(b"01", paths):
        option = load_option("debian", path)
        variables += bytes([digit]) + struct.pack("<H", len(option)) + option
    order = struct.pack("<HHH", 0, 1, 7)
    return bytes([len(order)]) + order + variables


# Every kind of node that has a text of its own: its type, sub-type and the smallest body.
NODE_KINDS = [
    (1, 1, 2), (1, 2, 1), (1, 3, 20), (1, 4, 16), (1, 5, 4), (1, 6, 9), (2, 1, 8), (2, 2, 12), (2, 3, 4), (3, 1, 4), (3, 2, 4),
    (3, 5, 2), (3, 6, 4), (3, 10, 16), (3, 11, 33), (3, 12, 15), (3, 13, 32), (3, 15, 7), (3, 16, 6), (3, 17, 1), (3, 18, 6),
    (3, 19, 14), (3, 20, 2), (3, 23, 12), (3, 24, 0), (3, 25, 2), (3, 26, 1), (3, 29, 1), (4, 1, 38), (4, 2, 20), (4, 3, 16), (4, 4, 0),
    (4, 5, 16), (4, 6, 16), (4, 7, 16), (4, 9, 34), (5, 1, 4), (6, 9, 3),
]  # fmt: skip


def nodes_of_all_kinds():
    """Boot variables with nodes of a few kinds each: as short as they may be, longer, and too short."""
    for more in (0, 7, -1):
        for first in range(0, len(NODE_KINDS), 10):
            variables = b""
            for digit, (kind, sub, size) in zip(b"0123456789", NODE_KINDS[first : first + 10]):
                body = bytes((digit * 7 + i * 3) % 256 if i % 5 else i % 3 for i in range(max(size + more, 0)))
                option = load_option("kind", path_node(kind, sub, body) + END)
                variables += bytes([digit]) + struct.pack("<H", len(option)) + option
            order = struct.pack("<10H", *range(10))
            yield bytes([len(order)]) + order + variables


def packed_image(signed):
    lines = b"".join(struct.pack("<II", number, len(text)) + text for number, text in [(10, b"PRINT 1"), (20, b"A=INKEY$")])
    packed = b"BAS2" + struct.pack("<I", 2) + lines
    whole = packed + b"KORVANE2-PACKED!" + struct.pack("<Q", len(packed))
    header = bytearray(512)
    header[0:2] = b"MZ"
    header[0x3C:0x40] = struct.pack("<I", 64)
    header[64:68] = b"PE\0\0"
    header[88:90] = struct.pack("<H", 0x20B)
    header[64 + 24 + 108 : 64 + 24 + 112] = struct.pack("<I", 16)
    image = header + whole
    if not signed:
        return bytes(image)
    image += bytes(-len(image) % 8)
    image[64 + 24 + 144 : 64 + 24 + 152] = struct.pack("<II", len(image), 16)
    return bytes(image + b"certificate.....")


def directory_record(name, attribute=0x20):
    text = utf16(name + "\0")
    record = struct.pack("<QQQ", 80 + len(text), 7, 512) + struct.pack("<HBBBBBBIhBB", 2024, 2, 29, 1, 2, 3, 0, 0, 0, 0, 0) * 3
    record += struct.pack("<Q", attribute) + text
    return bytes([len(record)]) + record


def others():
    yield "program", b"10 PRINT 1\r\n20 GOTO 10\r\n"
    yield "program", b"\xef\xbb\xbf10 A$=\"x\"\n30 DATA 1,\"2\",3\n\x1a"
    yield "startup", b"10 PRINT COMMANDLINEARGC\r\n20 IF A<3 THEN A=A+1:GOTO 20\r\n"
    yield "data", b"\"a,b\",1.5,7,9\r\nline\r\nxyz1,2,3,4\r\n" * 3
    for file in (ROOT / "tests/hosted/bitmaps").glob("*.bmp"):
        yield "bitmap", file.read_bytes()
    yield "memory-file", b"\xfd\0\0\0\x10\x04\0abcd" + b"\xfd\0\0\0\x10\x04\0\x1a"
    yield "packed-image", packed_image(False)
    yield "packed-image", packed_image(True)
    yield "directory", directory_record("A.BAS") + directory_record("SUB", 0x10) + directory_record("name with blanks.txt")
    for shape in b"\x00\x01\x24\x40":
        yield "disk", bytes([shape]) + gpt_disk()
        yield "disk", bytes([shape]) + mbr_disk()
    for shape, entries, size in [(0, 5000, 128), (0, 128, 5000), (0x80, 128, 128)]:
        disk = bytearray(gpt_disk())
        disk[592:600] = struct.pack("<II", entries, size)
        yield "disk", bytes([shape]) + bytes(disk)
    yield "boot", boot_variables()
    for variables in nodes_of_all_kinds():
        yield "boot", variables
    yield "memory-map", b"\x08" + b"".join(
        struct.pack("<BQQB", kind, base, pages, 15) for kind, base, pages in [(7, 0x40000000, 9), (0, 0x9F000, 0x61), (11, 0xFFFFFFFFFFFFF000, 5), (6, 0, 0)]
    )
    rsdp = b"RSD PTR \0KORVAN\x02" + struct.pack("<IIQI", 0x39000040, 36, 0x39000040, 0)
    yield "platform-tables", bytes([2, 0, 0, 0, 2, 0x80, 0]) + rsdp.ljust(0x80, b"\0") + b"_SM3_\0\x18\3\3\0\1\0" + struct.pack("<IQ", 64, 0x39000100)
    yield "command-line", utf16('korvane.efi one "two three"  four\0')
    path = path_node(4, 4, utf16("\\EFI\\BOOT\0")) + path_node(4, 4, utf16("\\BOOTX64.EFI\0")) + END
    yield "device-path", bytes([len(path)]) + path + path_node(3, 5, b"\1\0") + path_node(4, 1, bytes(38)) + END
    yield "modes", b"\1" + b"".join(struct.pack("<HHBB", width - 1, height - 1, more, form) for width, height, more, form in [(640, 480, 0, 1), (800, 600, 24, 0), (64, 40, 0, 3)])


EXPLORER = [
    "M 30000000 40", "M", "R 38000000", "W 39000000", "V 38000000", "F 38000000 38000010 41", "> 38000000 01 02", "A 38000000 text",
    "H 38000000 38000100 41 42", "HA 38000000 38000100 text", "C 38000000 38000010 38000020", "T 38000000 38000010 38000020",
    "SAVE X.BIN 38000000 38000040", "LOAD X.BIN 38000000", "DISKS", "DISK 0", "SECTOR 0 0 1", "PARTITIONS 0", "VOLUMES", "DIRFS 0 \\",
    "CAT 0 T.TXT", "HEXFILE 0 B.BMP", "BOOT", "OS", "MAP", "L", "I", "?", "X",
]  # fmt: skip


EXPLORER_SESSIONS = [
    "> 38000000 01 02 03 04\nC 38000000 38000004 38000010\nT 38000000 38000003 38000010\nC 38000000 38000004 38000010\nX",
    "A 38000000 text\nHA 38000000 38000100 text\nHA 38000000 38000100 none\nH 38000000 38000100 74 ?? 78\nX",
    "SAVE X.BIN 38000000 38000040\nLOAD X.BIN 38000100\nC 38000000 38000040 38000100\nLOAD NONE.BIN 38000000\nX",
    "M 0 10\nW FFFFFFFFFFFFFFF0\nR 1000\nV 39000000\nD 38000000\nX",
]  # fmt: skip

# What no transcript types that is short enough.
SESSIONS = [
    "10 FOR I=1 TO 9:A=CVI(MKI$(I)):B!=CVS(MKS$(I)):C#=CVD(MKD$(I)):D=CVI(\"x\"+A$):A$=\"y\":NEXT\nRUN\nPRINT A;B!;C#;D",
    "10 DEF FNA!(X!)=X!/3:DEF FNB(X,Y)=X*Y:DEF FNC%(X)=X\n20 FOR I=1 TO 9:A!=FNA!(I)+SGN(I-4):B=FNB(I,A!):C%=FNC%(B):NEXT\nRUN",
    "A$=STRING$(4000,65)+\"B\"\nPRINT INSTR(A$+A$,STRING$(2000,65)+\"B\")\nPRINT INSTR(A$,STRING$(2000,65)+\"C\")",
    "LOADBMP 1,\"B.BMP\"\nBITBLT 1,5,5,16777215\nBITBLT 1,-1,-1,0\nBITBLT 1,318,158,5592405",
    "10 FOR I=1 TO 300:COLOR I,I*3,I*7:PRINT I;:NEXT\n20 TXTWINDOW 3,3,9,6\n30 FOR I=1 TO 20:PRINT I:NEXT:CLS\nRUN\nTXTWINDOW OFF",
    "DIM A%(9)\nPOKE VARPTR(A%(1)),1\nPRINT PEEK(VARPTR(A%(1)))\nPRINT PEEK64(VARPTR(A%(0)))\nPRINT PEEK(VARTABLE)",
]  # fmt: skip


def main():
    folder = pathlib.Path(sys.argv[1])
    count = {}

    def write(target, content):
        number = count[target] = count.get(target, 0) + 1
        (folder / target).mkdir(parents=True, exist_ok=True)
        (folder / target / f"seed{number}").write_bytes(content)

    for session in [*sessions(), *(text.encode() + b"\n" for text in SESSIONS), *sessions_about_themes()]:
        write("session", session)
    for target, content in others():
        write(target, content)
    for command in EXPLORER:
        write("explorer", command.encode() + b"\nX\n")
    for session in EXPLORER_SESSIONS:
        write("explorer", session.encode() + b"\n")
    for example in sorted((ROOT / "examples").glob("*.bas")):
        if example.stat().st_size < 8192:
            write("program", example.read_bytes())
    print(", ".join(f"{target} {number}" for target, number in sorted(count.items())))


if __name__ == "__main__":
    main()
