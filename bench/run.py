"""Runs the measurements one after the other.

    python3 bench/run.py [--part NAME]... [--rounds N] [--into PAGE.md] [options of compare.py]

All tables are Markdown. With --into those of the page are replaced by those that have been measured: docs/performance.md.
Without --part it runs all of them but "code", which makes machine code in a variant of the image, "shapes", which compares statements with their general handlers, "even", which compares
those that may fall behind with other interpreters, and "web", which compares the machine for browsers with the image; options
that only compare.py knows choose the part "tasks".
"""

import argparse
import pathlib
import subprocess
import sys

import machine_facts
import tables

ROOT = pathlib.Path(__file__).resolve().parent.parent
PARTS = {
    "tasks": ("Tasks, beside other interpreters", "compare.py"),
    "screen": ("Screen statements at 1920x1080", "screen_speed"),
    "editor": ("The program's lines", "editor_speed"),
    "growth": ("Long programs and many names", "growth_speed"),
    "startup": ("Start-up", "startup_speed"),
    "code": ("Making machine code", "code_speed"),
    "shapes": ("Statements, beside the image without specialised ones", "shapes.py"),
    "even": ("Statements that may fall behind", "even.py"),
    "web": ("In Chromium, beside the image on the hosted firmware", "web_speed.py"),
}
EVERYTHING = ["tasks", "screen", "editor", "growth", "startup"]


def parse_arguments():
    parser = argparse.ArgumentParser(description="Measures the image's speed.", allow_abbrev=False)
    parser.add_argument("--part", action="append", choices=list(PARTS), help="may be given again")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--into", type=pathlib.Path, help="a page whose tables are replaced")
    parser.add_argument("--image", type=pathlib.Path,
                        help="build/korvane.efi; of the part web, build/without-native/korvane.efi")
    arguments, for_tasks = parser.parse_known_args()
    if not arguments.part:
        arguments.part = ["tasks"] if for_tasks else EVERYTHING
    return arguments, for_tasks


def run(part, title, command, page):
    """Shows what a part prints, and puts it into the page; whether it failed."""
    print(f"\n{title}\n", flush=True)
    printed = []
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as process:
        for line in process.stdout:
            print(line, end="", flush=True)
            printed.append(line)
    if page and process.returncode == 0:
        page.write_text(tables.put_into(page.read_text(), part, "".join(printed)))
    return process.returncode != 0


def main():
    arguments, for_tasks = parse_arguments()
    common = ["--rounds", str(arguments.rounds)]
    image = arguments.image or ROOT / "build/korvane.efi"
    scripted = [*common, *for_tasks, *(["--image", arguments.image] if arguments.image else [])]
    if "tasks" not in arguments.part:
        print("\n".join(machine_facts.machine_lines(image, arguments.rounds)))
    failures = 0
    for part, (title, program) in PARTS.items():
        if part in arguments.part:
            is_script = program.endswith(".py")
            command = ([sys.executable, ROOT / "bench" / program, *scripted] if is_script
                       else [ROOT / "build/host/bench" / program, *common, image])
            failures += run(part, title, command, arguments.into)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
