"""Runs random programs in several images and compares their screens and the data arenas they leave.

    python3 tests/differential/compare_images.py TERMINAL IMAGE OTHER-IMAGE... [--first SEED] [--count N] [--seconds S]

The first image executes every statement by its general handler, which is the plain statement of the rules: what the
specialised statements of another one do, and native code made at once in a third one, must not be distinguishable. A
difference is printed with its seed and its image; --first SEED --count 1 --show prints that program.
"""

import argparse
import concurrent.futures
import pathlib
import subprocess
import sys
import tempfile
import time

from random_program import ProgramMaker

SAVED_FILES = ("VARIABLES.BIN", "ARRAYS.BIN", "STRINGS.BIN")
NO_END = ["(no end)"]  # the screen of a program that does not end
TIME_LIMIT = 60  # seconds for one program; ample, for machines that are busy with other things


def run(terminal, image, program):
    """The screen after two runs of the program, and the files that it saved (None where it did not)."""
    with tempfile.TemporaryDirectory(prefix="korvane-differential-") as volume:
        command = [terminal, "--image", image, "--volume", volume]
        try:
            done = subprocess.run(command, input=(program + "RUN\nRUN\n").encode(), stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, timeout=TIME_LIMIT, check=False)
        except subprocess.TimeoutExpired:
            return NO_END, []
        screen = done.stdout.decode("utf-8", "replace").splitlines() + [f"exit status {done.returncode}"]
        paths = [pathlib.Path(volume) / name for name in SAVED_FILES]
        return screen, [path.read_bytes() if path.exists() else None for path in paths]


def session_begins(screen):
    """The screen without the start banner, which tells of the memory: images of two sizes leave different amounts."""
    start = next((i for i, line in enumerate(screen) if line == "Ready."), 0)
    return screen[start:]


def first_difference(one, other):
    """What differs between two results of run(), or None."""
    screens = [session_begins(result[0]) for result in (one, other)]
    if screens[0] != screens[1]:
        for left, right in zip(screens[0] + ["(end)"], screens[1] + ["(end)"]):
            if left != right:
                return f"screens:\n  {left}\n  {right}"
    for name, left, right in zip(SAVED_FILES, one[1], other[1]):
        if left != right:
            return f"{name} differs: {describe_bytes(left, right)}"
    return None


def describe_bytes(left, right):
    if left is None or right is None:
        return "one image did not save it"
    for offset, (a, b) in enumerate(zip(left, right)):
        if a != b:
            return f"byte {offset} is {a} and {b}"
    return f"{len(left)} and {len(right)} bytes"


def parse_arguments():
    parser = argparse.ArgumentParser(description="Compares images on random programs.")
    parser.add_argument("terminal")
    parser.add_argument("image")
    parser.add_argument("other_images", nargs="+")
    parser.add_argument("--first", type=int, default=1, help="seed of the first program")
    parser.add_argument("--count", type=int, default=600)
    parser.add_argument("--seconds", type=float, default=60, help="no new program after so long")
    parser.add_argument("--show", action="store_true", help="print the programs")
    return parser.parse_args()


def compare(arguments, seed):
    """Whether both runs saved the arena in the first image, and the difference of the images."""
    program = ProgramMaker(seed).program()
    first = run(arguments.terminal, arguments.image, program)
    for image in arguments.other_images:
        other = run(arguments.terminal, image, program)
        # Which image has an end, and which none, is a difference too; none in all of them tells nothing.
        difference = "no end" if NO_END in (first[0], other[0]) else first_difference(first, other)
        if difference:
            return False, f"{image}: {difference}"
    return all(first[1]), None


def main():
    arguments = parse_arguments()
    seeds = range(arguments.first, arguments.first + arguments.count)
    if arguments.show:
        print("".join(ProgramMaker(seed).program() + "\n" for seed in seeds))
    deadline = time.monotonic() + arguments.seconds
    compared = different = saved = 0
    # A run spends most of its time waiting for the clock's calibration.
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        before_deadline = lambda seed: compare(arguments, seed) if time.monotonic() < deadline else None
        for seed, result in zip(seeds, pool.map(before_deadline, seeds)):
            if result is None:
                continue
            compared += 1
            saved += result[0]
            if result[1]:
                different += 1
                print(f"seed {seed}: {result[1]}")
    print(f"{compared} programs, {saved} with saved arenas, {different} different")
    # A comparison that saw few arenas has compared little.
    return 1 if different or compared == 0 or saved * 2 < compared else 0


if __name__ == "__main__":
    sys.exit(main())
