"""Runs random programs in several images and compares their screens and the data arenas they leave.

    python3 tests/differential/compare_images.py TERMINAL IMAGE OTHER-IMAGE... [--first SEED] [--count N] [--seconds S]
                                                 [--together N] [--threads N]

The first image executes every statement by its general handler, which is the plain statement of the rules: what the
specialised statements of another one do, and native code made at once in a third one, must not be distinguishable. A
difference is printed with its seed and its image; --first SEED --count 1 --show prints that program.

To start a machine takes ten times as long as a program, so several programs are typed into one, each behind NEW. Where
they differ, each is played again on a machine of its own; a difference that only shows in company is printed with the
seeds of all of them.
"""

import argparse
import concurrent.futures
import itertools
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time

from random_program import ProgramMaker

SAVED_FILES = ("VARIABLES.BIN", "ARRAYS.BIN", "STRINGS.BIN")
NO_END = ["(no end)"]  # the screen of a program that does not end
NO_END_ANYWHERE = "no end in any image"
IN_MEMORY = "/dev/shm" if pathlib.Path("/dev/shm").is_dir() else None  # a disk takes as long as the programs
SCREEN = "80x32"  # a small one, which scrolls soon: most of what a program takes is its text's pixels
TIME_LIMIT = 60  # seconds of the processor for what is typed into one machine, on which others may be at work too


def saved_name(name, number):
    """What a file is called when the next program is typed."""
    return f"{name.partition('.')[0]}.{number}"


def run(terminal, image, programs):
    """The screen after two runs of each program, and for each the files that it saved (None where it did not)."""
    typed = "".join(
        f"NEW\n{program}RUN\nRUN\n"
        + "".join(f'NAME "{name}" AS "{saved_name(name, number)}"\n' for name in SAVED_FILES)
        for number, program in enumerate(programs))
    with tempfile.TemporaryDirectory(prefix="korvane-differential-", dir=IN_MEMORY) as volume:
        command = [terminal, "--image", image, "--volume", volume, "--size", SCREEN]
        with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as process:
            resource.prlimit(process.pid, resource.RLIMIT_CPU, (TIME_LIMIT, TIME_LIMIT + 1))
            shown, _ = process.communicate(typed.encode())
        if process.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
            return NO_END, []
        screen = shown.decode("utf-8", "replace").splitlines() + [f"exit status {process.returncode}"]
        paths = [pathlib.Path(volume) / saved_name(name, number)
                 for number in range(len(programs)) for name in SAVED_FILES]
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
    for name, left, right in zip(itertools.cycle(SAVED_FILES), one[1], other[1]):
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
    parser.add_argument("--together", type=int, default=20, help="programs that are typed into one machine")
    parser.add_argument("--threads", type=int, default=8)
    parser.add_argument("--show", action="store_true", help="print the programs")
    return parser.parse_args()


def compare(arguments, seeds):
    """How many of the programs saved the arena in the first image, and the difference of the images."""
    programs = [ProgramMaker(seed).program() for seed in seeds]
    first = run(arguments.terminal, arguments.image, programs)
    others = [run(arguments.terminal, image, programs) for image in arguments.other_images]
    if all(screen == NO_END for screen, _ in (first, *others)):
        return 0, NO_END_ANYWHERE
    for image, other in zip(arguments.other_images, others):
        difference = "no end" if NO_END in (first[0], other[0]) else first_difference(first, other)
        if difference:
            return 0, f"{image}: {difference}"
    files = [first[1][i:i + len(SAVED_FILES)] for i in range(0, len(first[1]), len(SAVED_FILES))]
    return sum(all(saved) for saved in files), None


def compare_in_company(arguments, seeds):
    """How many programs saved the arena, and for each that differs (or for all of them) its seeds and the difference.

    Which image has an end, and which none, is a difference too; none in all of them tells nothing. A program may have none in
    company that has one alone, for what RND gives depends on the programs before it.
    """
    saved, difference = compare(arguments, seeds)
    if not difference:
        return saved, []
    alone = [((seed,), *compare(arguments, (seed,))) for seed in seeds]
    found = [(seeds_of_one, one) for seeds_of_one, _, one in alone if one and one != NO_END_ANYWHERE]
    if not found and difference != NO_END_ANYWHERE:
        found = [(seeds, difference)]
    return sum(count for _, count, _ in alone), found


def main():
    arguments = parse_arguments()
    seeds = range(arguments.first, arguments.first + arguments.count)
    if arguments.show:
        print("".join(ProgramMaker(seed).program() + "\n" for seed in seeds))
    deadline = time.monotonic() + arguments.seconds
    companies = [seeds[i:i + arguments.together] for i in range(0, len(seeds), arguments.together)]
    compared = different = saved = 0
    # A machine spends most of the time that it takes to start waiting for the clock's calibration.
    with concurrent.futures.ThreadPoolExecutor(arguments.threads) as pool:
        before_deadline = lambda some: compare_in_company(arguments, some) if time.monotonic() < deadline else None
        for some, result in zip(companies, pool.map(before_deadline, companies)):
            if result is None:
                continue
            compared += len(some)
            saved += result[0]
            different += len(result[1])
            for seeds_of_one, difference in result[1]:
                print(f"seed {', '.join(map(str, seeds_of_one))}: {difference}", flush=True)
    print(f"{compared} programs, {saved} with saved arenas, {different} different")
    # A comparison that saw few arenas has compared little.
    return 1 if different or compared == 0 or saved * 2 < compared else 0


if __name__ == "__main__":
    sys.exit(main())
