"""Runs the tasks of bench/tasks, and a few screen statements, in the machine for browsers and in the image on the hosted
firmware, in turns, and prints a table of the ratios of their times.

    python3 bench/web_speed.py [--rounds N] [--only NAME]... [--image KORVANE.EFI]

In the browser the time is the processor time of all its processes from RUN to the prompt, drawing included, and so is what
the browser compiles meanwhile: as the page does, all machines share a module, so that is most of it in the first round. Of
the image it is that of its process less that of an empty program, as in compare.py. It is the image without native code,
which the browser does not have either. Both print the same checksum.
"""

import argparse
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile

import compare
import machine_facts
import task_programs

ROOT = pathlib.Path(__file__).resolve().parent.parent
SIZE = (1280, 720)
CELLS = f"{SIZE[0] // 8}x{SIZE[1] // 16}"
TASKS_GOAL = 3
SCREEN_GOAL = 4

# Statements with how often they are repeated: some tenths of a second of the image's processor time, as the browser's is
# counted in hundredths.
SCREEN_TASKS = {
    "cls": ("CLS", 2000),
    "print_scrolling": ('PRINT "A line of text that is printed, and scrolls all others up"', 8000),
    "boxes": ("LINE (100,100)-(1000,600),I MOD 16,BF", 3000),
    "lines": ("LINE (0,I MOD 700)-(1279,700-I MOD 700),I MOD 16", 300000),
    "circles": ("CIRCLE (640,360),300,I MOD 16", 200000),
    "points": ("PSET (I MOD 1280,I MOD 720),I MOD 16", 4000000),
}


def screen_program(statement, count):
    return (f'10 FOR I=1 TO {count}\n20 {statement}\n30 NEXT I\n40 CLS\n50 PRINT "CHECK";I-1\n'
            f'60 PRINT "REPEATED";{count}\n70 END\n')


class WebPlayer:
    """Chromium with the machine in it; a program's seconds and what the screen shows then."""

    def __init__(self):
        self.process = subprocess.Popen(["node", ROOT / "bench/web_player.mjs", *map(str, SIZE)], text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def run(self, program):
        self.process.stdin.write(f"{program}\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline()
        if not answer:
            raise compare.RunFailed(f"the browser ended in {program}")
        result = json.loads(answer)
        return result["seconds"], result["text"]

    def close(self):
        self.process.stdin.close()
        self.process.wait()


def programs(folder):
    """Name, path and whether it is a screen task."""
    found = [(task.name, task / "korvane.bas", False) for task in task_programs.write_tasks(folder / "tasks")]
    for name, (statement, count) in SCREEN_TASKS.items():
        path = folder / f"{name}.bas"
        path.write_text(screen_program(statement, count))
        found.append((name, path, True))
    return found


def measure(native, web, program, startup, folder):
    native_seconds, native_text = compare.run(native, program, folder)
    web_seconds, web_text = web.run(program)
    numbers = {}
    for label in ("CHECK", "REPEATED"):
        native_number = compare.printed_number(label, native_text, native, program)
        numbers[label] = native_number
        if compare.printed_number(label, web_text, native, program) != native_number:
            raise compare.RunFailed(f"{program}: the browser's {label} is another one")
    native_each = max(native_seconds - startup, 1e-6) / numbers["REPEATED"]
    return native_each, web_seconds / numbers["REPEATED"]


def table_lines(results):
    lines = ["| task | image, us | browser, us | ratio |", "|---|---:|---:|---:|"]
    for name, rounds in results.items():
        native = statistics.median(native for native, _ in rounds)
        web = statistics.median(web for _, web in rounds)
        ratio = statistics.median(web / native for native, web in rounds)
        lines.append(f"| {name} | {native * 1e6:.2f} | {web * 1e6:.2f} | {ratio:.2f} |")
    return [*lines, f"| **geometric mean** | | | {mean(results):.2f} |"]


def mean(results):
    return compare.geometric_mean([statistics.median(web / native for native, web in rounds)
                                   for rounds in results.values()])


def main():
    parser = argparse.ArgumentParser(description="Compares the machine for browsers with the image.")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--only", action="append", help="a task; may be given again")
    parser.add_argument("--image", type=pathlib.Path, default=ROOT / "build/without-native/korvane.efi")
    arguments = parser.parse_args()
    native = compare.interpreters(arguments.image.resolve())["korvane"]
    native.arguments += ["--size", CELLS]
    print("\n".join(machine_facts.machine_lines(arguments.image, arguments.rounds)))
    tasks, screen = {}, {}
    failures = 0
    web = WebPlayer()
    with tempfile.TemporaryDirectory(prefix="korvane-bench-") as scratch:
        folder = pathlib.Path(scratch)
        empty = folder / "empty.bas"
        empty.write_text(native.empty)
        startup = statistics.median(compare.run(native, empty, folder)[0] for _ in range(5))
        chosen = [one for one in programs(folder) if not arguments.only or one[0] in arguments.only]
        for _ in range(arguments.rounds):
            for name, program, is_screen in chosen:
                try:
                    result = measure(native, web, program, startup, folder)
                    (screen if is_screen else tasks).setdefault(name, []).append(result)
                except compare.RunFailed as reason:
                    failures += 1
                    print(reason, file=sys.stderr)
    web.close()
    for title, results, goal in (("Tasks", tasks, TASKS_GOAL), (f"Screen, {SIZE[0]}x{SIZE[1]}", screen, SCREEN_GOAL)):
        if not results:
            continue
        print(f"\n{title}\n\n" + "\n".join(table_lines(results)))
        print(f"goal: a mean of {goal} at most")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
