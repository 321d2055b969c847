#!/usr/bin/env python3
"""Shows a program in a terminal window without a window, and takes a picture of it.

usage: terminal_picture.py --type FILE --screenshot PICTURE.png [--size COLUMNSxROWS] -- COMMAND [ARGUMENT...]

Runs the command on a terminal of its own, types FILE's lines once the prompt stands there, waits until the screen
stays the same, saves the picture, and ends the command.
"""

import argparse
import os
import re
import signal
import sys
import time

from pseudo_terminal import PseudoTerminal

SETTLED_SECONDS = 1.0


def wait_until_settled(terminal):
    quiet_since = time.monotonic()
    received = len(terminal.received)
    while time.monotonic() - quiet_since < SETTLED_SECONDS:
        terminal.receive(0.1)
        if len(terminal.received) != received:
            received = len(terminal.received)
            quiet_since = time.monotonic()


def read_size(text):
    match = re.fullmatch(r"(\d+)x(\d+)", text)
    if not match:
        raise ValueError(f"a size is COLUMNSxROWS, not {text}")
    return int(match[1]), int(match[2])


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0])
    parser.add_argument("--type", required=True)
    parser.add_argument("--screenshot", required=True)
    parser.add_argument("--size", default="100x37")
    parser.add_argument("command", nargs="+")
    options = parser.parse_args()
    try:
        columns, rows = read_size(options.size)
        with open(options.type, encoding="utf-8") as file:
            lines = file.read().splitlines()
        with PseudoTerminal(options.command, columns, rows) as terminal:
            terminal.wait_for_row("Ready.")
            terminal.send("".join(f"\x1b[200~{line}\x1b[201~\r" for line in lines))
            wait_until_settled(terminal)
            terminal.screenshot(options.screenshot)
            os.kill(terminal.process, signal.SIGTERM)
            terminal.wait_for_end()
    except (OSError, ValueError, AssertionError) as error:
        sys.exit(f"terminal_picture.py: {error}")


if __name__ == "__main__":
    main()
