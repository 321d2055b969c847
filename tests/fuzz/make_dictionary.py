#!/usr/bin/env python3
"""Prints libFuzzer's dictionary: every word that the interpreter knows, from its own tables.

usage: make_dictionary.py [EXTRA...]    extra words in the dictionary's own spelling
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
TABLES = {
    "src/program/keywords.cpp": r'^\s*\{"([^"]+)", KW_',
    "src/function_table.cpp": r'(?:bare|unary|call)\("([^"]+)"',
    "src/explorer/command_table.cpp": r'^\s*\{"([^"]+)", "',
    "src/program/landmarks.cpp": r'^\s*\{"([A-Z][A-Z0-9_]+)"',
}
# What sessions need beside words: keys and happenings (player.h), names, numbers at limits.
SESSION = [
    r"\x1b", r"\x01", r"\x02", r"\x03", r"\x04", r"\x07", r"\x1c\x02", r"\x1d\x1a\x00\x00", r"\x1e", r"\x1f", r"\x0a",
    "A$", "B%", "A(1)", "#1", "32767", "32768", "&HFFFF", "1E38", "9223372036854775807", r"\x22P\x22", r"\x22T.TXT\x22",
    "10 ", "20 ", " THEN ", ":NEXT", "+", r"\x22x\x22", " AS 1", "FOR INPUT", "ON ERROR GOTO 20", "RESUME NEXT",
]


def words():
    for path, pattern in TABLES.items():
        found = re.findall(pattern, (ROOT / path).read_text(), re.MULTILINE)
        if not found:
            sys.exit(f"make_dictionary.py: {path} holds no words; has its form changed?")
        yield from found


def main():
    for word in sorted(set(words())):
        escaped = word.replace("\\", "\\\\").replace('"', '\\"')
        print(f'"{escaped}"')
    for word in SESSION + sys.argv[1:]:
        print(f'"{word}"')


if __name__ == "__main__":
    main()
