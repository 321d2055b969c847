"""Runs an example program and compares its whole output with what its model says.

usage: check_example.py KORVANE-TERMINAL KORVANE.EFI PROGRAM.BAS
"""

import difflib
import pathlib
import shutil
import subprocess
import sys
import tempfile

from models import EXAMPLES


def main(terminal, image, program):
    program = pathlib.Path(program)
    model, answers = EXAMPLES[program.stem]
    expected = [line.rstrip() for line in model(answers)]
    # The program's folder is its volume: a fresh one, with nothing left by an earlier run.
    with tempfile.TemporaryDirectory() as folder:
        copy = shutil.copy(program, folder)
        done = subprocess.run([terminal, "--image", image, copy], input="".join(line + "\n" for line in answers),
                              capture_output=True, text=True, timeout=60, check=True)
    shown = [line.rstrip() for line in done.stdout.split("\n")]
    shown = shown[shown.index("RUN") + 1:]
    while shown and not shown[-1]:
        shown.pop()
    if shown == [*expected, "Ready."]:
        return 0
    print("\n".join(difflib.unified_diff([*expected, "Ready."], shown, "model", "program", lineterm="")))
    return 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
