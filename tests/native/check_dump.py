"""Checks that the code made for a loop can be dumped and read, and adds what the loop adds.

    python3 tests/native/check_dump.py DUMP-CODE IMAGE
"""

import pathlib
import subprocess
import sys
import tempfile

LINES = "10 FOR I=1 TO 200000:S=S+I*2.5:NEXT\nRUN\n"


def disassemble(program, image, lines, folder):
    """What objdump reads in the code that was made while the lines were typed."""
    (folder / "lines").write_text(lines)
    address = subprocess.run([program, image, folder / "lines", folder / "code"], check=True, capture_output=True,
                             text=True).stdout.strip()
    return subprocess.run(["objdump", "-D", "-b", "binary", "-m", "i386:x86-64", "-M", "intel", f"--adjust-vma={address}",
                           folder / "code"], check=True, capture_output=True, text=True).stdout


def main(program, image):
    with tempfile.TemporaryDirectory(prefix="korvane-dump-") as name:
        shown = disassemble(program, image, LINES, pathlib.Path(name))
    missing = [word for word in ("mulsd", "addsd", "ucomisd", "jmp") if word not in shown]
    # What no processor knows would be bytes that were never written.
    print(shown if missing else f"{len(shown.splitlines())} lines")
    return f"the code lacks {missing}" if missing else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
