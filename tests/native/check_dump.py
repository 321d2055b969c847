"""Checks that the code made for a loop can be dumped and read, and that it is what docs/inside.md shows of it.

    python3 tests/native/check_dump.py DUMP-CODE IMAGE PAGE

The page's listings are its fenced blocks of the language `asm`. What stands behind a semicolon explains, and "..." stands for
any address or distance.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

LINES = "10 FOR I = 1 TO 200000: S = S + I * 2.5: NEXT\nRUN\n"


def disassemble(program, image, lines, folder):
    """What objdump reads in the code that was made while the lines were typed."""
    (folder / "lines").write_text(lines)
    address = subprocess.run([program, image, folder / "lines", folder / "code"], check=True, capture_output=True,
                             text=True).stdout.strip()
    return subprocess.run(["objdump", "-D", "-b", "binary", "-m", "i386:x86-64", "-M", "intel", "--no-show-raw-insn",
                           f"--adjust-vma={address}", folder / "code"], check=True, capture_output=True, text=True).stdout


def without_addresses(instruction):
    """The instruction with single blanks, and "..." for what is different in each run."""
    bare = re.sub(r"^(j\w+) 0x\w+", r"\1 ...", " ".join(instruction.split()))
    return re.sub(r"([-+])0x\w+\]", r"\1...]", bare)


def instructions_of(shown):
    lines = (line.split(":", 1) for line in shown.splitlines() if re.match(r" *[0-9a-f]+:", line))
    return [without_addresses(instruction) for _, instruction in lines]


def listings_of(page):
    blocks = re.findall(r"^```asm\n(.*?)^```", page, re.MULTILINE | re.DOTALL)
    return [[" ".join(line.split(";")[0].split()) for line in block.splitlines()] for block in blocks]


def contains(code, listing):
    return any(code[i:i + len(listing)] == listing for i in range(len(code)))


def main(program, image, page):
    with tempfile.TemporaryDirectory(prefix="korvane-dump-") as name:
        code = instructions_of(disassemble(program, image, LINES, pathlib.Path(name)))
    listings = listings_of(pathlib.Path(page).read_text())
    missing = [listing for listing in listings if not contains(code, listing)]
    if missing or not listings:
        print("\n".join(code))
        return "the code lacks: " + "; ".join(missing[0]) if missing else f"{page} has no listing"
    print(f"{len(code)} instructions, {len(listings)} listings")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
