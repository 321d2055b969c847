"""Machines that sessions are typed into, each a process of its own that plays every session on a fresh copy."""

import pathlib
import shutil
import subprocess
import tempfile
import threading

# Lines of many tokens that fill the token cache when they run: some 2,090 times 125 records of 64 bytes are, beside
# the lines' text, the program arena's 16 MiB. Shorter and shorter ones take what is left; without one of them (typing
# its number removes it) some room is left.
FILLING = {number: "IF Q0 THEN " + ":" * 121 for number in range(1, 2201)}
SHORT_FILLING = {2201: ":" * 124, 2202: ":" * 63, 2203: ":" * 31, 2204: ":" * 15, 2205: ":" * 7, 2206: ":::",
                 2207: ":"}


class Step:
    """What one line of a session showed: rows of the screen, how often a key was looked for and the time it took."""

    def __init__(self, kind, polls, microseconds, rows):
        self.kind, self.polls, self.microseconds, self.rows = kind, polls, microseconds, rows


class Result:
    """The steps of a session that show something, and the fault that ended it (None when there was none)."""

    def __init__(self, steps, fault):
        self.steps, self.fault = steps, fault


class Player:
    """One image on one machine; with `filled` its program begins with lines that fill the token cache."""

    def __init__(self, program, image, filled=False, linked=False, patience=None):
        self.volume = pathlib.Path(tempfile.mkdtemp(prefix="korvane-sessions-"))
        command = [program, "--image", image, "--volume", str(self.volume)]
        if linked:
            command.append("--linked")
        if patience:
            command += ["--patience", str(patience)]
        if filled:
            lines = "".join(f"{number} {text}\r\n" for number, text in {**FILLING, **SHORT_FILLING}.items())
            (self.volume / "KEEP.BAS").write_text(lines)
            command += ["--prepare", 'LOAD "KEEP.BAS"', "--prepare", "CLS"]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def close(self):
        self.process.stdin.close()
        self.process.wait()
        shutil.rmtree(self.volume, ignore_errors=True)

    def begin(self, sessions):
        """Starts playing; end() gives the results. Several players can play at the same time."""
        text = "".join(line + "\n" for session in sessions for line in [*session, "."])
        self.expected = len(sessions)
        self.writer = threading.Thread(target=self.write, args=(text.encode("latin-1"),))
        self.writer.start()

    def write(self, text):
        self.process.stdin.write(text)
        self.process.stdin.flush()

    def end(self):
        results = [self.read_result() for _ in range(self.expected)]
        self.writer.join()
        return results

    def read_line(self):
        line = self.process.stdout.readline()
        if not line:
            raise SystemExit("the session player has ended")
        return line.decode("utf-8", "replace").rstrip("\n")

    def read_result(self):
        steps = []
        while True:
            kind, _, rest = self.read_line().partition(" ")
            if kind == "END":
                return Result(steps, None)
            if kind == "FAULT":
                return Result(steps, rest)
            polls, microseconds, rows = map(int, rest.split())
            steps.append(Step(kind, polls, microseconds, [self.read_line() for _ in range(rows)]))
