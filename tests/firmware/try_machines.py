#!/usr/bin/env python3
"""Boots the interpreter on the virtual PCs of machines.py, types, draws, saves and loads on each.

usage: try_machines.py [--write] [--jobs N] [TEXT...]

With words only the machines whose names contain one of them; N of them at a time, else as many as there are processors.
What each came to is kept in build/firmware/outcomes.json; --write makes docs/booting.md's table from it.
"""

import argparse
import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

from disk_image import DiskImageError  # noqa: E402
from machines import VIRTUAL_PCS  # noqa: E402
from media import check_file_system, make_medium, sign  # noqa: E402
from qemu_machine import Machine, MachineError  # noqa: E402

IMAGE = ROOT / "build" / "korvane.efi"
OUTCOMES = ROOT / "build" / "firmware" / "outcomes.json"
PAGE = ROOT / "docs" / "booting.md"
TABLE_HEAD = "| Virtual PC | Firmware | Started from | Outcome |"
UNTRIED = "not tried yet"
FAILED = "FAILED: "
USB_KEY_INTERVAL = 0.3  # seconds; USB keyboards forget keys of which they are not asked in time
PATIENCE = 600  # seconds, for a machine that is emulated on one that is busy

TEXT = "THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG 0123456789"
PROGRAM = f'10 PRINT "{TEXT}"'
PROMPT = ["Ready.", "█"]
YELLOW = 0xFFFF55


class Wrong(Exception):
    pass


def key_of(pc):
    return " / ".join((pc.name, pc.firmware.name, pc.medium.name))


class Session:
    """A machine at its prompt."""

    def __init__(self, machine):
        self.machine = machine
        self.numbers = itertools.count(1)

    def wait_for(self, condition, what):
        return self.machine.wait_for(condition, PATIENCE, what)

    def answer_to(self, line):
        """The rows that a line prints on the cleared screen, without the prompt."""
        mark = f" {next(self.numbers)}"
        self.machine.type_line(f"CLS:PRINT{mark}:{line}")
        screen = self.wait_for(
            lambda screen: screen.rows()[0] == mark and [row for row in screen.rows() if row][-2:] == PROMPT,
            "the answer to " + line,
        )
        return [row for row in screen.rows()[1:] if row not in ("", *PROMPT)]

    def require(self, line, expected):
        rows = self.answer_to(line)
        if rows != expected:
            raise Wrong(f"{line} shows {rows}")


def work(session, pc):
    """Types, draws, saves and loads."""
    if pc.mode:
        width, height = pc.mode
        session.machine.type_line(f"SCREEN {width},{height}")
        session.wait_for(lambda screen: (screen.width, screen.height) == pc.mode, f"{width}x{height}")
    session.machine.type_line(PROGRAM)
    session.require("GOTO 10", [TEXT])
    session.machine.type_line("CLS:LINE (400,300)-(440,340),14,BF")
    session.wait_for(lambda screen: screen.pixel(420, 320) == YELLOW, "what is drawn")
    if pc.options:
        session.require("PRINT COMMANDLINEARGC;COMMANDLINEARG$(2)", [" 3 second argument"])
    if pc.medium.read_only:
        session.require('SAVE "W.BAS"', ["Bad file name"])
        return
    session.require('SAVE "W.BAS"', [])
    session.machine.type_line("NEW")
    session.require("GOTO 10", ["Undefined line number"])
    session.require('LOAD "W.BAS"', [])
    session.require("GOTO 10", [TEXT])
    session.require('FILES "W.*"', ["W.BAS"])


def wait_for_words(log, words):
    deadline = time.monotonic() + PATIENCE
    while words.encode() not in (log.read_bytes() if log.exists() else b""):
        if time.monotonic() > deadline:
            raise Wrong(f"the firmware's console does not say {words}")
        time.sleep(0.5)


def try_machine(pc, folder):
    image = sign(folder, IMAGE) if pc.firmware.signed else IMAGE
    path, disk = make_medium(folder, pc.medium.kind, image, pc.options)
    log = folder / "serial.txt"
    arguments = [word.replace("{}", str(path)) for word in (*pc.firmware.arguments, *pc.medium.arguments, *pc.arguments)]
    keyboard = {"key_interval": USB_KEY_INTERVAL, "ps2": False} if pc.usb_keyboard else {}
    arguments += ["-chardev", f"file,id=log,path={log}", "-device", "isa-serial,chardev=log"]
    with Machine(None, memory=pc.memory, arguments=arguments, code=str(pc.firmware.code),
                 variables=str(pc.firmware.variables), **keyboard) as machine:  # fmt: skip
        if pc.says:
            wait_for_words(log, pc.says)
            return f'says "{pc.says}" and stays there'
        machine.wait_for(lambda screen: "Ready." in screen.rows(), PATIENCE, "the prompt")
        work(Session(machine), pc)
    if disk:
        check_file_system(disk)
        if not pc.medium.read_only and disk.get_bytes("W.BAS") != PROGRAM.encode() + b"\r\n":
            raise Wrong("the saved program is another one")
    return "works; nothing can be saved" if pc.medium.read_only else "works"


def versions():
    def first_line(*command):
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()[0]

    qemu = re.search(r"[0-9.]+", first_line("qemu-system-x86_64", "--version"))[0]
    return f"QEMU {qemu} and Debian's OVMF {first_line('dpkg-query', '-W', '-f=${Version}', 'ovmf')}"


def table(outcomes):
    rows = [TABLE_HEAD, "|---|---|---|---|"]
    for pc in VIRTUAL_PCS:
        rows.append(f"| {pc.name} | {pc.firmware.name} | {pc.medium.name} | {outcomes.get(key_of(pc), UNTRIED)} |")
    return "\n".join(rows) + "\n"


def write_page(outcomes):
    page = PAGE.read_text()
    begin = page.index(TABLE_HEAD)
    end = page.index("\n\n", begin) + 1
    page = page[:begin] + table(outcomes) + page[end:]
    page = re.sub(r"with QEMU [^:]*:", f"with {versions()}:", page, count=1)
    PAGE.write_text(page)


def read_outcomes():
    return json.loads(OUTCOMES.read_text()) if OUTCOMES.exists() else {}


def keep_outcome(pc, outcome):
    outcomes = read_outcomes()
    outcomes[key_of(pc)] = outcome
    OUTCOMES.parent.mkdir(parents=True, exist_ok=True)
    OUTCOMES.write_text(json.dumps(outcomes, indent=1))


def outcome_of(pc):
    """What a machine came to, and after how many seconds."""
    begin = time.monotonic()
    try:
        with tempfile.TemporaryDirectory(prefix="korvane-firmware-") as folder:
            outcome = try_machine(pc, pathlib.Path(folder))
    except (Wrong, MachineError, DiskImageError, OSError) as error:
        outcome = FAILED + str(error)
    return outcome, time.monotonic() - begin


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0], allow_abbrev=False)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("words", nargs="*")
    options = parser.parse_args()
    failed = 0
    chosen = [pc for pc in VIRTUAL_PCS if not options.words or any(word in key_of(pc) for word in options.words)]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as machines:
        trials = {machines.submit(outcome_of, pc): pc for pc in chosen}
        for trial in concurrent.futures.as_completed(trials):
            pc = trials[trial]
            outcome, seconds = trial.result()
            failed += outcome.startswith(FAILED)
            keep_outcome(pc, outcome)
            print(f"{key_of(pc)}: {outcome} ({seconds:.0f} s)", flush=True)
    outcomes = read_outcomes()
    if options.write:
        write_page(outcomes)
    print(f"{len(chosen)} virtual PCs, {failed} failed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
