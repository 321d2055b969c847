"""A virtual PC with UEFI firmware (QEMU and OVMF), worked through QEMU's QMP socket: keys in, pictures out."""

import json
import os
import shlex
import shutil
import socket
import subprocess
import tempfile
import time

import programs
from screen_text import Screen

QEMU = "qemu-system-x86_64"
FIRMWARE_CODE = "/usr/share/OVMF/OVMF_CODE_4M.fd"
FIRMWARE_VARIABLES = "/usr/share/OVMF/OVMF_VARS_4M.fd"

# A key press waits in a 16-byte buffer of the emulated PS/2 keyboard until the firmware's next look, and takes up to six
# bytes of it (shift down, key down, key up, shift up); faster typing would lose keys. So would typing on when a busy
# computer keeps the firmware from looking: the keyboard controller's status tells when all has been read.
KEY_INTERVAL = 0.03
KEYBOARD_STATUS_PORT = 0x64
OUTPUT_FULL = 1
READING_TIME = 60  # seconds; firmware that has read no keys by then reads none
SETTLING_LOOKS = 20  # at most so many looks at a screen that keeps changing

NAMED_KEYS = {
    " ": "spc", "\n": "ret", "\b": "backspace", "\x1b": "esc", "-": "minus", "=": "equal", "[": "bracket_left",
    "]": "bracket_right", "\\": "backslash", ";": "semicolon", "'": "apostrophe", "`": "grave_accent",
    ",": "comma", ".": "dot", "/": "slash",
}  # fmt: skip
SHIFTED = dict(zip('~!@#$%^&*()_+{}|:"<>?', "`1234567890-=[]\\;',./"))


def key_codes(character):
    """QEMU's key codes that together type a character on a US keyboard."""
    if character in SHIFTED:
        return ["shift"] + key_codes(SHIFTED[character])
    if character in NAMED_KEYS:
        return [NAMED_KEYS[character]]
    if character.isascii() and character.isalnum():
        return (["shift"] if character.isupper() else []) + [character.lower()]
    raise ValueError(f"no key types {character!r}")


class MachineError(Exception):
    pass


class Machine:
    """A running virtual PC. Use it in a with statement: leaving it ends QEMU."""

    def __init__(self, disk, *, memory=512, arguments=(), display="none", code=FIRMWARE_CODE,
                 variables=FIRMWARE_VARIABLES, accelerator="tcg", key_interval=KEY_INTERVAL, ps2=True,
                 state=None):  # fmt: skip
        """Boots from a disk image file, which the machine may write to; the firmware's variables are a copy. ps2 tells
        that it is a PS/2 keyboard which is typed on. With a state, which save_state() of a machine with the same devices
        has written, it goes on from there."""
        self.folder = tempfile.mkdtemp(prefix="korvane-qemu-")
        self.socket = None
        self.process = None
        self.key_interval = key_interval
        self.ps2 = ps2
        try:
            for file in (code, variables):
                programs.require_file(file, "ovmf")
            own_variables = shutil.copy(variables, os.path.join(self.folder, "variables.fd"))
            self.start(
                [programs.find(QEMU), "-machine", "q35", "-m", str(memory), "-cpu", "max", "-accel", accelerator]
                + ["-nic", "none", "-display", display, "-serial", "none"]
                + ["-drive", f"if=pflash,format=raw,unit=0,readonly=on,file={code}"]
                + ["-drive", f"if=pflash,format=raw,unit=1,file={own_variables}"]
                + (["-drive", f"format=raw,file={disk}"] if disk else [])
                + list(arguments)
                + (["-incoming", f"exec:cat {shlex.quote(str(state))}"] if state else [])
            )
            if state:
                self.go_on()
        except BaseException:
            self.close()
            raise

    def start(self, command):
        address = os.path.join(self.folder, "qmp")
        log_path = os.path.join(self.folder, "qemu.log")
        with open(log_path, "wb") as log:
            self.process = subprocess.Popen(
                command + ["-qmp", f"unix:{address},server=on,wait=off"],
                stdin=subprocess.DEVNULL, stdout=log, stderr=log,
            )  # fmt: skip
        deadline = time.monotonic() + 20
        while True:
            try:
                self.socket = socket.socket(socket.AF_UNIX)
                self.socket.connect(address)
                break
            except OSError:
                self.socket.close()
                if self.process.poll() is not None or time.monotonic() > deadline:
                    with open(log_path, encoding="utf-8", errors="replace") as log:
                        raise MachineError("QEMU did not start: " + log.read().strip()) from None
                time.sleep(0.05)
        self.socket.settimeout(60)
        self.stream = self.socket.makefile("rw", encoding="utf-8")
        self.stream.readline()  # the greeting
        self.command("qmp_capabilities")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Ends QEMU, writing back what its disk caches hold, and removes the machine's own files."""
        if self.process and self.process.poll() is None:
            try:
                self.command("quit")
                self.process.wait(10)
            except (MachineError, OSError, ValueError, subprocess.TimeoutExpired):
                self.process.kill()
                self.process.wait()
        if self.socket:
            self.socket.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def command(self, name, **arguments):
        """Sends one QMP command and returns its result."""
        self.stream.write(json.dumps({"execute": name, "arguments": arguments}) + "\n")
        self.stream.flush()
        while True:
            line = self.stream.readline()
            if not line:
                raise MachineError("QEMU ended")
            answer = json.loads(line)
            if "error" in answer:
                raise MachineError(f"{name}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]

    def status(self):
        return self.command("query-status")["status"]

    def save_state(self, path):
        """Writes what a machine that stands still is, for another one to go on from."""
        self.command("migrate", uri=f"exec:cat >{shlex.quote(str(path))}")
        while (status := self.command("query-migrate")["status"]) != "completed":
            if status == "failed":
                raise MachineError("the machine's state could not be saved")
            time.sleep(0.02)

    def go_on(self):
        while self.status() == "inmigrate":
            time.sleep(0.02)
        self.command("cont")

    def press(self, *codes):
        """Presses keys together (QEMU's key codes), releases them in the opposite order."""
        self.wait_until_keys_are_read()
        events = [(code, True) for code in codes] + [(code, False) for code in reversed(codes)]
        self.command(
            "input-send-event",
            events=[
                {"type": "key", "data": {"down": down, "key": {"type": "qcode", "data": code}}}
                for code, down in events
            ],
        )
        time.sleep(self.key_interval)

    def wait_until_keys_are_read(self):
        deadline = time.monotonic() + READING_TIME
        while self.ps2 and self.keyboard_status() & OUTPUT_FULL:
            if time.monotonic() > deadline:
                raise MachineError(f"no key has been read for {READING_TIME} s")
            time.sleep(0.005)

    def keyboard_status(self):
        answer = self.command("human-monitor-command", **{"command-line": f"i /b {KEYBOARD_STATUS_PORT:#x}"})
        return int(answer.split("=")[1], 16)

    def type(self, text):
        for character in text:
            self.press(*key_codes(character))

    def type_line(self, text):
        self.type(text + "\n")

    def screenshot(self, path):
        """Saves the screen as a PNG picture."""
        self.command("screendump", filename=os.path.abspath(path), format="png")

    def look(self):
        """The screen at this moment. A picture taken while it is being drawn shows a cell half old, half new."""
        path = os.path.join(self.folder, "screen.ppm")
        self.command("screendump", filename=path)
        with open(path, "rb") as file:
            return Screen(file.read())

    def screen(self):
        """The screen, looked at again until two looks in a row show the same text or time has passed."""
        screen = self.look()
        for _ in range(SETTLING_LOOKS):
            previous, screen = screen, self.look()
            if previous.rows() == screen.rows():
                break
        return screen

    def wait_for(self, condition, timeout=60, what="the expected screen"):
        """Looks at the screen until condition(screen) holds and returns that screen."""
        deadline = time.monotonic() + timeout
        while True:
            screen = self.look()
            # What a half-drawn picture promises may not be there.
            if condition(screen) and condition(screen := self.screen()):
                return screen
            if time.monotonic() > deadline:
                raise MachineError(f"waited {timeout} s in vain for {what}; the screen shows:\n{screen.text()}")
            time.sleep(0.15)

    def wait_for_row(self, row, timeout=60):
        """Waits until one of the screen's rows reads exactly so."""
        return self.wait_for(lambda screen: row in screen.rows(), timeout, f"the row {row!r}")

    def wait_for_exit(self, timeout=30):
        """Waits until the machine has switched itself off."""
        try:
            self.process.wait(timeout)
        except subprocess.TimeoutExpired as error:
            raise MachineError(f"still running after {timeout} s") from error
