"""The interpreter on terminals of several kinds, as tmux understands what it sends."""

import os
import shutil
import subprocess
import time

import pytest
from conftest import IMAGE, ROOT
from pseudo_terminal import PseudoTerminal

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"
PICTURE = ROOT / "tools" / "terminal_picture.py"


class Tmux:
    """A window of 80x24 on a server of its own, with one command in it."""

    def __init__(self, folder, term, command, **variables):
        self.socket = str(folder / "tmux")
        setting = " ".join(f"{name}='{value}'" for name, value in variables.items())
        self.tmux("-f", "/dev/null", "-u", "new-session", "-d", "-x", "80", "-y", "24", "sleep 60")
        self.tmux("set", "-g", "default-terminal", term)
        words = " ".join(f"'{word}'" for word in command)
        self.tmux("new-window", f"exec env -u COLORTERM -u NO_COLOR -u LC_ALL {setting} {words}")

    def tmux(self, *arguments):
        environment = os.environ | {"LC_ALL": "C.UTF-8"}
        done = subprocess.run(
            ["tmux", "-S", self.socket, *arguments], capture_output=True, check=True, env=environment, timeout=20
        )
        return done.stdout.decode()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.tmux("kill-server")

    def rows(self, *options):
        return [row.rstrip() for row in self.tmux("capture-pane", "-p", *options).splitlines()]

    def send(self, text):
        self.tmux("send-keys", "-l", text)
        self.tmux("send-keys", "Enter")

    def wait_for(self, condition, seconds=20):
        deadline = time.monotonic() + seconds
        while not condition(self.rows()):
            assert time.monotonic() < deadline, "\n".join(self.rows())
            time.sleep(0.05)


def session(tmp_path, term, **variables):
    if not shutil.which("tmux"):
        pytest.skip("tmux is not installed")
    volume = tmp_path / "volume"
    volume.mkdir(exist_ok=True)
    command = [TERMINAL, "--image", IMAGE, "--volume", volume]
    return Tmux(tmp_path, term, command, **variables)


UTF_8 = {"LC_ALL": "C.UTF-8"}


@pytest.mark.parametrize("term, variables, red", [
    ("tmux-256color", {"COLORTERM": "truecolor"}, "38;2;255;0;0"),
    ("tmux-256color", {}, "38;5;196"),
    ("screen-256color", {}, "38;5;196"),
    ("screen", {}, "91"),
    ("xterm", {}, "91"),
])  # fmt: skip
def test_colours_are_the_nearest_that_the_terminal_has(tmp_path, term, variables, red):
    with session(tmp_path, term, **UTF_8, **variables) as window:
        window.wait_for(lambda rows: "Ready." in rows)
        window.send("CLS:COLOR 255,40,40,0,0,0:PRINT \"│é\"" if red == "91" else "CLS:COLOR 255,0,0,0,0,0:PRINT \"│é\"")
        window.wait_for(lambda rows: "│é" in rows)
        coloured = [row for row in window.rows("-e") if "│é" in row]
        assert red in coloured[-1]


@pytest.mark.parametrize("term, variables", [("tmux-256color", {"NO_COLOR": "1"}), ("vt100", {})])
def test_terminals_without_colours_get_none(tmp_path, term, variables):
    with session(tmp_path, term, **UTF_8, **variables) as window:
        window.wait_for(lambda rows: "Ready." in rows)
        window.send("COLOR 255,0,0:LINE (400,100)-(500,200),&HFF0000,BF:PRINT 6*7")
        window.wait_for(lambda rows: " 42" in rows and any("█" in row for row in rows))
        shown = "\n".join(window.rows("-e"))
        assert "38;" not in shown and "[31m" not in shown and "[91m" not in shown


@pytest.mark.parametrize("locale", ["C", "POSIX", "de_DE.ISO-8859-1"])
def test_terminals_without_utf_8_get_ascii(tmp_path, locale):
    with session(tmp_path, "tmux-256color", LC_ALL=locale) as window:
        window.wait_for(lambda rows: "Ready." in rows)
        window.send("PRINT CHR$(179);CHR$(130);CHR$(177):LINE (400,100)-(500,110),&HFF0000,BF")
        window.wait_for(lambda rows: "|e:" in rows)
        assert "\n".join(window.rows()).isascii()


def test_long_output_and_editing_at_80x24(tmp_path):
    with session(tmp_path, "screen-256color", **UTF_8) as window:
        window.wait_for(lambda rows: "Ready." in rows)
        window.send("FOR I=1 TO 100:PRINT I:NEXT")
        window.wait_for(lambda rows: " 100" in rows and " 80" in rows)
        assert "HELP" in window.rows()[0]
        window.send("PRINT 1234567")
        window.wait_for(lambda rows: " 1234567" in rows)


def test_larger_screen_shows_what_surrounds_the_cursor(tmp_path):
    volume = tmp_path / "volume"
    volume.mkdir()
    command = [TERMINAL, "--image", IMAGE, "--volume", volume, "--size", "120x60"]
    if not shutil.which("tmux"):
        pytest.skip("tmux is not installed")
    with Tmux(tmp_path, "tmux-256color", command, **UTF_8) as window:
        window.wait_for(lambda rows: "Ready." in rows)
        window.send("FOR I=1 TO 40:PRINT I:NEXT")
        # The cursor stands in row 49 or so; the rows above it are seen.
        window.wait_for(lambda rows: "Ready." in rows and " 40" in rows and " 30" in rows)
        window.send("PRINT 7*7")
        window.wait_for(lambda rows: " 49" in rows)


def test_dumb_terminal_gets_lines(tmp_path):
    with PseudoTerminal(
        [str(TERMINAL), "--image", str(IMAGE), "--volume", str(tmp_path)], environment={"TERM": "dumb"}
    ) as terminal:
        terminal.send("PRINT 6*7\n\x04")
        assert terminal.wait_for_end() == 0
        assert b" 42" in terminal.received and b"\x1b" not in terminal.received


# ---- The tool that takes pictures -------------------------------------------------------------------------------


def test_characters_may_be_cut_between_two_reads():
    with PseudoTerminal(["cat"]) as terminal:
        for byte in "\x1b[2;3Hé▀░\x1b[38;2;1;2;3mx".encode():
            terminal.show(bytes([byte]))
        assert "".join(terminal.cells[1][2:6]) == "é▀░x"
        assert terminal.colours[1, 5][0] == "1;2;3"


def test_pictures_of_the_same_lines_are_the_same(tmp_path):
    (tmp_path / "volume").mkdir()
    lines = tmp_path / "lines.txt"
    lines.write_text('CLS\nCIRCLE (300,200),90,&HFF00FF\n10 PRINT STRING$(2000,219)\nRUN\n', encoding="utf-8")
    pictures = []
    for number in range(4):
        picture = tmp_path / f"{number}.png"
        command = ["--type", lines, "--screenshot", picture, "--", TERMINAL, "--no-rescue", "--image", IMAGE]
        subprocess.run(["python3", PICTURE, *command, "--volume", tmp_path / "volume"], check=True, timeout=60)
        pictures.append(picture.read_bytes())
    assert len(set(pictures)) == 1
    assert not any(path.name.startswith(".korvane") for path in (tmp_path / "volume").iterdir())
