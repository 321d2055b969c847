"""Runs the measurements one after the other.

    python3 bench/run.py [--part NAME]... [--rounds N] [options of compare.py]

Without --part it runs all of them but "shapes", which compares statements with their general handlers, "even", which compares
those that may fall behind with other interpreters, and "web", which compares the machine for browsers with the image; options
that only compare.py knows choose the part "tasks".
"""

import argparse
import pathlib
import subprocess
import sys

import machine_facts

ROOT = pathlib.Path(__file__).resolve().parent.parent
PROGRAMS = {
    "screen": ("Screen statements at 1920x1080", "screen_speed"),
    "editor": ("The program's lines", "editor_speed"),
    "growth": ("Long programs and many names", "growth_speed"),
    "startup": ("Start-up", "startup_speed"),
}
PARTS = ["tasks", *PROGRAMS, "shapes", "even", "web"]


def parse_arguments():
    parser = argparse.ArgumentParser(description="Measures the image's speed.", allow_abbrev=False)
    parser.add_argument("--part", action="append", choices=PARTS, help="may be given again")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--image", type=pathlib.Path, default=ROOT / "build/korvane.efi")
    arguments, for_tasks = parser.parse_known_args()
    if not arguments.part:
        arguments.part = ["tasks"] if for_tasks else ["tasks", *PROGRAMS]
    return arguments, for_tasks


def main():
    arguments, for_tasks = parse_arguments()
    common = ["--rounds", str(arguments.rounds)]
    failures = 0
    if "tasks" in arguments.part:
        command = [sys.executable, ROOT / "bench/compare.py", *common, "--image", arguments.image, *for_tasks]
        failures += subprocess.run(command, check=False).returncode != 0
    else:
        print("\n".join(machine_facts.machine_lines(arguments.image, arguments.rounds)))
    for part, (title, program) in PROGRAMS.items():
        if part in arguments.part:
            print(f"\n{title}\n", flush=True)
            command = [ROOT / "build/host/bench" / program, *common, arguments.image]
            failures += subprocess.run(command, check=False).returncode != 0
    if "shapes" in arguments.part:
        print("\nStatements, beside the image without specialised ones\n", flush=True)
        command = [sys.executable, ROOT / "bench/shapes.py", *common, "--image", arguments.image, *for_tasks]
        failures += subprocess.run(command, check=False).returncode != 0
    if "even" in arguments.part:
        print("\nStatements that may fall behind\n", flush=True)
        command = [sys.executable, ROOT / "bench/even.py", *common, "--image", arguments.image, *for_tasks]
        failures += subprocess.run(command, check=False).returncode != 0
    if "web" in arguments.part:
        print("\nIn Chromium, beside the image on the hosted firmware\n", flush=True)
        command = [sys.executable, ROOT / "bench/web_speed.py", *common, "--image", arguments.image, *for_tasks]
        failures += subprocess.run(command, check=False).returncode != 0
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
