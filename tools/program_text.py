"""Program files as people have them, in the code page that the interpreter reads.

The same rules as the terminal's (host/firmware/program_file.cpp): UTF-8, with or without byte order mark, is converted when all of
the file is that; other bytes are codes already. Tabs count as blanks, lines of blanks as empty, Ctrl-Z at the end is left
out, UTF-16 is refused.
"""

import codecs
import re

CONTROL_Z = b"\x1a"
CONTROL_LOOKS = dict(enumerate("☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼", 1)) | {127: "⌂"}


class ProgramTextError(Exception):
    """The file is no text that the interpreter could read."""


def code_table():
    """{character: code}; the looks of the codes 10 and 13, which end lines, are not in it."""
    table = {chr(code): code for code in range(128)}
    for code in range(128, 256):
        table[bytes([code]).decode("cp437")] = code
    for code in [*range(1, 32), 127]:
        if code not in (10, 13):
            table[CONTROL_LOOKS[code]] = code
    return table


def to_codes(data):
    """The bytes that the interpreter is to read."""
    if data[:2] in (codecs.BOM_UTF16_LE, codecs.BOM_UTF16_BE) or (len(data) > 1 and (data[0] == 0) != (data[1] == 0)):
        raise ProgramTextError("it is in UTF-16, which is not understood: save it as UTF-8")
    data = data.removeprefix(codecs.BOM_UTF8).rstrip(CONTROL_Z)
    try:
        text = data.decode("utf-8")
    except UnicodeDecodeError:
        pass
    else:
        table = code_table()
        data = bytes(table.get(character, ord("?")) for character in text)
    return re.sub(rb"(?m)(^|(?<=\r)) +(?=\r|\n|\Z)", rb"\1", data.replace(b"\t", b" "))


def is_program(name):
    return name.lower().endswith(".bas")
