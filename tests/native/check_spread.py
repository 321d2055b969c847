#!/usr/bin/env python3
"""Checks when a program of many lines gets machine code: not while it is passed a few times, and for nearly all of
its lines, in large pieces, when it is passed again and again; and that it is not made over and over.

    check_spread.py DUMP-CODE IMAGE
"""
import pathlib
import subprocess
import sys
import tempfile

LINES = 8000
FEW_PASSES = 30
MANY_PASSES = 3000
# A line's statement, the fewest bytes of code that it can take (counting the statement down, and its work), and the most
# pieces of code that there may be: one has room for 256 lines, or for 128 with a statement behind THEN.
STATEMENTS = {
    "A(3) = A(2) + X": (39, 70),
    "IF X < 0 THEN X = 1": (31, 85),
}
MOST_TIMES = 6  # as much, with ways in and out
WAY_IN = bytes.fromhex("49 bc ff ff ff ff ff ff df ff")  # what tells a number from an infinity, loaded once in a piece


def code_made(dump_code, image, statement, passes):
    """The code that there is after so many passes."""
    lines = [f"10 DIM A(10): L = {passes}"]
    lines += [f"{100 + i} {statement}" for i in range(LINES)]
    lines += ["9000 L = L - 1: IF L > 0 THEN 100 ELSE END", "RUN"]
    with tempfile.TemporaryDirectory() as folder:
        typed = pathlib.Path(folder, "typed.txt")
        typed.write_text("\n".join(lines) + "\n")
        output = pathlib.Path(folder, "code.bin")
        run = subprocess.run([dump_code, image, typed, output], capture_output=True, text=True, check=False)
        if "no machine code was made" in run.stderr:
            return b""
        if run.returncode != 0:
            sys.exit(run.stderr)
        return output.read_bytes()


def main():
    dump_code, image = sys.argv[1:]
    failures = []
    for statement, (least, most_pieces) in STATEMENTS.items():
        few = len(code_made(dump_code, image, statement, FEW_PASSES))
        if few != 0:
            failures.append(f"{statement}: {few} bytes of code after {FEW_PASSES} passes")
        code = code_made(dump_code, image, statement, MANY_PASSES)
        many, pieces = len(code), code.count(WAY_IN)
        if not 1 <= pieces <= most_pieces:
            failures.append(f"{statement}: {pieces} pieces of code after {MANY_PASSES} passes")
        if not 0.9 * LINES * least <= many <= MOST_TIMES * LINES * least:
            failures.append(f"{statement}: {many} bytes of code after {MANY_PASSES} passes")
    sys.exit("\n".join(failures) or 0)


if __name__ == "__main__":
    main()
