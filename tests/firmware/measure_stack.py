#!/usr/bin/env python3
"""Measures how much of the firmware's stack the interpreter uses on OVMF, at the deepest.

usage: measure_stack.py

The stack below the prompt is painted by the interpreter itself (POKE64); then programs recurse as deep as they can, and
what uses most of the firmware is done. What of the paint is gone has been used, by the firmware's own work beneath us too.
Fails above 100 KiB: firmware promises 128.
"""

import pathlib
import re
import struct
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

from machines import OVMF  # noqa: E402
from media import make_medium  # noqa: E402
from qemu_machine import Machine  # noqa: E402
from try_machines import IMAGE, PATIENCE, Session, Wrong  # noqa: E402

KIB = 1024
MOST = 100 * KIB
PAINTED = 110 * KIB  # below the prompt
SPARED = 8 * KIB  # which the program that paints uses itself
PAINT = 0x5AFEC0DE5AFEC0DE
NO_MEMORY = ["Out of memory"]

RECURSIONS = [
    ("DEF FNA(X)=FNA(X)", "PRINT FNA(1)"),
    ("DEF FNB(X)=((((((((((FNB(X)))))))))))", "PRINT FNB(1)"),
    ("DEF FNC(X)=2^-FNC(NOT X)+" + "-" * 90 + "X", "PRINT FNC(1)"),
    ("DEF FND(X)=" + "-" * 100 + "FND(X)", "PRINT FND(1)"),
    ("DEF FNG$(A$)=LEFT$(FNG$(A$)+A$,1)", 'PRINT FNG$("X")'),
    ("DEF FNH(A,B,C,D,E,F,G,H)=ABS(FNH(A,B,C,D,E,F,G,H))", "PRINT FNH(1,2,3,4,5,6,7,8)"),
]
# Much of the firmware is beneath these.
OTHERS = ['SAVE "S.BAS"', 'CREATEEFI "S"', 'KILL "S.EFI"', 'MKDIR "M":CHDIR "M":CHDIR ".."', "FILES ,S", "KORVANE INFO"]
DRAWING = ["CLS:LINE (600,400)-(700,500),3,B:PAINT (650,450),3", "SCREEN 1280,800"]


def stack_pointers(machine, times=40):
    pointers = []
    for _ in range(times):
        registers = machine.command("human-monitor-command", **{"command-line": "info registers"})
        pointers.append(int(re.search(r"RSP=([0-9a-f]+)", registers)[1], 16))
    return pointers


def lowest_used(machine, folder, begin, end):
    path = folder / "stack"
    machine.command("pmemsave", val=begin, size=end - begin, filename=str(path))
    words = struct.unpack(f"<{(end - begin) // 8}Q", path.read_bytes())
    for i, word in enumerate(words):
        if word != PAINT:
            return begin + 8 * i
    raise Wrong("nothing has used the painted stack")


def measure(folder):
    path, _ = make_medium(folder, "disk", IMAGE)
    with Machine(str(path), memory=1024, code=str(OVMF.code), variables=str(OVMF.variables)) as machine:
        machine.wait_for(lambda screen: "Ready." in screen.rows(), PATIENCE, "the prompt")
        session = Session(machine)
        machine.type_line("10 REM")
        session.require("PRINT 7", [" 7"])
        # Whatever the firmware is at beneath it, the prompt's own place is the highest.
        prompt = max(stack_pointers(machine)) & ~7
        begin, end = prompt - PAINTED, prompt - SPARED
        session.require(f"FOR A#=&H{begin:X} TO &H{end - 8:X} STEP 8:POKE64 A#,&H{PAINT:X}:NEXT", [])
        at_first = prompt - lowest_used(machine, folder, begin, end + 8)
        for definition, call in RECURSIONS:
            machine.type_line(definition)
            session.require(call, NO_MEMORY)
        after_recursion = prompt - lowest_used(machine, folder, begin, end + 8)
        for line in OTHERS:
            session.answer_to(line)
        for line in DRAWING:
            machine.type_line(line)
        session.require("PRINT 8", [" 8"])
        return at_first, after_recursion, prompt - lowest_used(machine, folder, begin, end + 8)


def main():
    with tempfile.TemporaryDirectory(prefix="korvane-stack-") as folder:
        at_first, recursion, all_of_it = measure(pathlib.Path(folder))
    print(f"bytes below the prompt: {at_first} at first, {recursion} after recursions, {all_of_it} after all")
    if all_of_it > MOST:
        raise Wrong(f"more than {MOST} bytes")


if __name__ == "__main__":
    try:
        main()
    except Wrong as error:
        sys.exit(f"measure_stack.py: {error}")
