"""A program on a pseudo-terminal, and what a person in front of it would see."""

import codecs
import fcntl
import os
import pty
import re
import select
import signal
import struct
import termios
import time

import png
import screen_text

DEFAULT_INK = "170;170;170"
DEFAULT_PAPER = "0;0;0"
DEFAULT_ENVIRONMENT = {"TERM": "xterm-256color", "COLORTERM": "truecolor", "LC_ALL": "C.UTF-8", "NO_COLOR": ""}


class PseudoTerminal:
    """Runs a command on a terminal of its own and understands the control sequences that it sends."""

    def __init__(self, command, columns=80, rows=25, environment=None):
        self.columns, self.rows = columns, rows
        self.cells = [[" "] * columns for _ in range(rows)]
        self.colours = {}  # (row, column): (ink, paper), as the parameters of the sequences
        self.modes = set()  # private modes that are switched on
        self.row = self.column = 0
        self.ink = self.paper = None
        self.received = b""
        self.decoder = codecs.getincrementaldecoder("utf-8")(errors="replace")
        self.pending = ""
        self.status = None
        self.process, self.device = pty.fork()
        if self.process == 0:
            time.sleep(0.1)  # until the size is set
            os.execvpe(command[0], command, os.environ | DEFAULT_ENVIRONMENT | (environment or {}))
        self.set_size(columns, rows)
        self.settings = termios.tcgetattr(self.device)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.status is None:
            os.kill(self.process, signal.SIGKILL)
            os.waitpid(self.process, 0)
        os.close(self.device)

    def set_size(self, columns, rows):
        """Resizes the window, which loses what it showed."""
        self.columns, self.rows = columns, rows
        self.cells = [[" "] * columns for _ in range(rows)]
        fcntl.ioctl(self.device, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def send(self, text):
        os.write(self.device, text if isinstance(text, bytes) else text.encode())

    def screen(self):
        """The rows, trailing blanks trimmed."""
        return ["".join(row).rstrip() for row in self.cells]

    def receive(self, seconds):
        """Takes what comes within a time; False when the program has closed its terminal."""
        ready, _, _ = select.select([self.device], [], [], seconds)
        if not ready:
            return True
        try:
            data = os.read(self.device, 65536)
        except OSError:
            return False
        self.received += data
        self.show(data)
        return bool(data)

    def wait_for(self, condition, seconds=20):
        """Receives until condition() holds."""
        deadline = time.monotonic() + seconds
        while not condition():
            if not self.receive(0.1) or time.monotonic() > deadline:
                raise AssertionError("waited in vain; the terminal shows:\n" + "\n".join(self.screen()))

    def wait_for_row(self, text, seconds=20):
        self.wait_for(lambda: text in self.screen(), seconds)

    def wait_for_end(self, seconds=10):
        """Waits until the program has ended; its exit status, negative when a signal ended it."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            self.receive(0.05)
            process, status = os.waitpid(self.process, os.WNOHANG)
            if process:
                while self.receive(0.2) and select.select([self.device], [], [], 0)[0]:
                    pass
                self.status = os.waitstatus_to_exitcode(status)
                return self.status
        raise AssertionError("the program does not end")

    def show(self, data):
        # Characters, like sequences, may be cut between two reads.
        text = self.pending + self.decoder.decode(data)
        # A sequence that is cut at the end waits for its rest.
        cut = re.search(r"\x1b(\[[?0-9;]*|\][^\x1b]*(\x1b)?)?$", text)
        self.pending = text[cut.start() :] if cut else ""
        text = text[: cut.start()] if cut else text
        for sequence, title, plain in re.findall(r"(\x1b\[[?0-9;]*[@-~])|(\x1b\].*?\x1b\\)|(.)", text, re.S):
            if sequence:
                self.control(sequence[2:-1], sequence[-1])
            elif plain and plain >= " ":
                self.put(plain)

    def put(self, character):
        if self.row < self.rows and self.column < self.columns:
            self.cells[self.row][self.column] = character
            self.colours[self.row, self.column] = (self.ink, self.paper)
        self.column += 1

    def control(self, parameters, final):
        if final == "H":
            self.row, self.column = (int(number) - 1 for number in parameters.split(";"))
        elif final == "J":
            self.colours = {}
            self.cells = [[" "] * self.columns for _ in range(self.rows)]
        elif final == "m" and parameters.startswith("38;2;"):
            self.ink = parameters[5:]
        elif final == "m" and parameters.startswith("48;2;"):
            self.paper = parameters[5:]
        elif final == "m" and parameters == "0":
            self.ink = self.paper = None
        elif final in "hl" and parameters.startswith("?"):
            (self.modes.add if final == "h" else self.modes.discard)(parameters[1:])

    def screenshot(self, path):
        """Saves a PNG picture of the terminal, drawn with the console font."""
        glyphs = {text: glyph for glyph, text in screen_text.glyph_texts().items()}
        picture = bytearray()
        for row in range(self.rows):
            for line in range(screen_text.CELL_HEIGHT):
                for column in range(self.columns):
                    glyph = glyphs.get(self.cells[row][column], glyphs["?"])
                    ink, paper = self.colours.get((row, column), (None, None))
                    bits = glyph[line]
                    for bit in range(7, -1, -1):
                        colour = (ink or DEFAULT_INK) if bits >> bit & 1 else (paper or DEFAULT_PAPER)
                        picture += bytes(map(int, colour.split(";")))
        png.write_png(
            path, self.columns * screen_text.CELL_WIDTH, self.rows * screen_text.CELL_HEIGHT, bytes(picture)
        )

    def is_restored(self):
        """Whether the terminal is as the program found it: settings, screen, cursor, paste mode."""
        cursor_shown = b"\x1b[?25h" in self.received[self.received.rfind(b"\x1b[?25l") :]
        return (
            termios.tcgetattr(self.device) == self.settings
            and cursor_shown
            and not self.modes & {"1049", "2004"}
        )
