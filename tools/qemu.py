#!/usr/bin/env python3
"""Boots the interpreter in a virtual PC (QEMU with OVMF).

usage: qemu.py KORVANE.EFI [--disk DISK.img] [--type FILE] [--screenshot PICTURE.png] [--text] [--kvm]
               [--example FILE]... [FILE...]

Without --type, --screenshot and --text the machine opens in a window, or without a display as a VNC server on
this host's loopback address, and runs until it is closed. With them it boots, types FILE's lines, saves the
picture, prints the screen's text, and ends. The other files go onto the boot disk; --disk keeps that disk for
next time, and examples go onto it only when it is made, as they may have been changed since. The processor is
emulated; --kvm uses the host's, which is faster but does not work inside every virtual
machine.
"""

import argparse
import os
import signal
import subprocess
import sys
import tempfile

from disk_image import DiskImage, DiskImageError, root_files
from qemu_machine import Machine, MachineError

SETTLED_LOOKS = 3


def prepare_disk(path, image, files, examples):
    disk = DiskImage(path)
    if os.path.exists(path):
        disk.install(image, root_files(files))
        return
    placed = root_files(files, examples)
    try:
        disk.create().install(image, placed)
    except BaseException:
        if os.path.exists(path):
            os.unlink(path)
        raise


def has_display():
    return bool(os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"))


def show(disk, accelerator):
    """Runs the machine for a person."""
    if has_display():
        with Machine(disk, display="gtk", accelerator=accelerator) as machine:
            machine.process.wait()
        return
    # Port 5900, or the next free one.
    with Machine(disk, arguments=["-vnc", "127.0.0.1:0,to=99"], accelerator=accelerator) as machine:
        server = machine.command("query-vnc")
        print(f"The screen is at VNC address {server['host']}:{server['service']}; connect with, for example,")
        print(f"    vncviewer {server['host']}::{server['service']}")
        print("Ctrl-C here switches the machine off.", flush=True)
        machine.process.wait()


def wait_until_settled(machine):
    """Waits until the screen stays the same for a while: what was typed has been worked off."""
    looks = []

    def settled(screen):
        looks.append(screen.pixels)
        return len(looks) >= SETTLED_LOOKS and len(set(looks[-SETTLED_LOOKS:])) == 1

    machine.wait_for(settled, what="a screen that stays the same")


def run_script(disk, lines, options):
    with Machine(disk, accelerator=options.accelerator) as machine:
        machine.wait_for(lambda screen: "Ready." in screen.rows(), what="the prompt")
        for line in lines:
            machine.type_line(line)
        wait_until_settled(machine)
        if options.screenshot:
            machine.screenshot(options.screenshot)
        if options.text:
            sys.stdout.write(machine.screen().text())


def read_lines(path):
    if path is None:
        return []
    with open(path, encoding="ascii") as file:
        return file.read().splitlines()


def parse_options():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n\n")[0], allow_abbrev=False)
    parser.add_argument("image")
    parser.add_argument("files", nargs="*")
    parser.add_argument("--disk")
    parser.add_argument("--type")
    parser.add_argument("--screenshot")
    parser.add_argument("--text", action="store_true")
    parser.add_argument("--kvm", dest="accelerator", action="store_const", const="kvm", default="tcg")
    parser.add_argument("--example", action="append", default=[])
    return parser.parse_intermixed_args()


def main():
    options = parse_options()
    # Ended from outside, the machine is switched off all the same.
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit(1))
    try:
        lines = read_lines(options.type)
        with tempfile.TemporaryDirectory(prefix="korvane-") as folder:
            disk = options.disk or os.path.join(folder, "boot.img")
            prepare_disk(disk, options.image, options.files, options.example)
            if options.type or options.screenshot or options.text:
                run_script(disk, lines, options)
            else:
                show(disk, options.accelerator)
    except KeyboardInterrupt:
        pass
    except (OSError, ValueError, DiskImageError, MachineError, subprocess.SubprocessError) as error:
        sys.exit(f"qemu.py: {error}")


if __name__ == "__main__":
    main()
