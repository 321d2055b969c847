"""The terminal among hostile company: standard files that are closed or refuse to wait, a terminal that stops reading,
signals at any moment, a folder that somebody has prepared."""

import fcntl
import os
import signal
import socket
import subprocess
import termios
import time

import pytest
from conftest import IMAGE, ROOT
from pseudo_terminal import PseudoTerminal

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"


def command(*arguments):
    return [str(word) for word in (TERMINAL, "--image", IMAGE, *arguments)]


def write(path, text):
    path.write_text(text, encoding="utf-8")
    return path


# ---- Standard files ---------------------------------------------------------------------------------------------

# Writes a file while there is something to be printed.
WRITER = '10 OPEN "OUT.TXT" FOR OUTPUT AS #1\n20 FOR I=1 TO 5000:PRINT I:NEXT\n30 PRINT #1,"KEPT"\n40 CLOSE #1\n'


@pytest.mark.parametrize("closed", ["<&-", ">&-", "2>&-", "<&- >&-", "<&- >&- 2>&-", "<&- 2>&-"])
@pytest.mark.parametrize("kind", ["--script", "session"])
def test_closed_standard_files_are_no_others(tmp_path, closed, kind):
    program = write(tmp_path / "p.bas", WRITER)
    words = command("--script", program) if kind == "--script" else command(program)
    done = subprocess.run(
        ["sh", "-c", f'exec "$@" {closed}', "sh", *words], input=b"", capture_output=True, timeout=60, check=False
    )
    assert done.returncode == (74 if ">&-" in closed.replace("2>&-", "") else 0), done
    assert program.read_text(encoding="ascii") == WRITER
    # What the program has written before its output failed is all that may be there.
    if (tmp_path / "OUT.TXT").exists():
        assert (tmp_path / "OUT.TXT").read_bytes() in (b"", b"KEPT\r\n")
    assert {path.name for path in tmp_path.iterdir()} <= {"p.bas", "OUT.TXT"}


def set_waiting(file, waits):
    flags = fcntl.fcntl(file, fcntl.F_GETFL)
    fcntl.fcntl(file, fcntl.F_SETFL, flags & ~os.O_NONBLOCK if waits else flags | os.O_NONBLOCK)


@pytest.mark.parametrize("kind", ["--script", "session"])
def test_pipe_that_refuses_to_wait_gets_everything(tmp_path, kind):
    program = write(tmp_path / "p.bas", '10 FOR I=1 TO 20000:PRINT I;"................":NEXT\n')
    reader, writer = os.pipe()
    set_waiting(writer, False)
    words = command("--script", program) if kind == "--script" else command(program)
    with subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=writer, stderr=subprocess.PIPE) as process:
        os.close(writer)
        time.sleep(0.5)  # until the pipe is full
        with open(reader, encoding="utf-8") as file:
            rows = file.read().splitlines()
        assert process.wait(timeout=30) == 0, process.stderr.read()
    assert [row for row in rows if "...." in row] == [f" {i} ................" for i in range(1, 20001)]


def test_input_that_is_not_there_yet_is_waited_for(tmp_path):
    program = write(tmp_path / "p.bas", "10 INPUT A$:INPUT B$:PRINT A$;B$\n")
    reader, writer = os.pipe()
    set_waiting(reader, False)
    with subprocess.Popen(command("--script", program), stdin=reader, stdout=subprocess.PIPE) as process:
        os.close(reader)
        for line in (b"one\n", b"two\n"):
            time.sleep(0.3)
            os.write(writer, line)
        os.close(writer)
        assert process.stdout.read() == b"? ? onetwo\n"
        assert process.wait(timeout=30) == 0


def test_input_without_line_ends_keeps_nobody(tmp_path):
    # More than a line of the interpreter takes, and more than is read at once.
    lines = "x" * 50_000 + "\nPRINT 7*7\n" + "y" * 50_000
    done = subprocess.run(
        command("--volume", tmp_path), input=lines.encode(), capture_output=True, timeout=60, check=True
    )
    rows = done.stdout.decode().splitlines()
    assert rows[rows.index("PRINT 7*7") + 1 :][:2] == [" 49", "Ready."]


@pytest.mark.parametrize("end", ["\n", "\r\n"])
@pytest.mark.parametrize("length", [4094, 4095, 4096, 4097])
def test_pieces_of_long_input_are_put_together(tmp_path, length, end):
    program = write(tmp_path / "p.bas", '10 LINE INPUT A$:LINE INPUT B$:PRINT "<";LEFT$(A$,3);B$;">"\n')
    lines = "x" * length + end + "second\nPRINT 7*7\n"
    done = subprocess.run(command(program), input=lines.encode(), capture_output=True, timeout=30, check=True)
    assert done.stdout.decode().splitlines()[-5:] == ["<xxxsecond>", "Ready.", "PRINT 7*7", " 49", "Ready."]


# ---- A terminal that stops reading, and signals -----------------------------------------------------------------


def wait_for_end(process, seconds=20):
    """Waits without reading what the terminal is sent."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        done, status = os.waitpid(process, os.WNOHANG)
        if done:
            return os.waitstatus_to_exitcode(status)
        time.sleep(0.05)
    raise AssertionError("the session does not end")


def has_rescued(folder):
    return any(path.name.startswith(".korvane-unsaved") for path in folder.iterdir())


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_terminal_that_stops_reading_keeps_nobody(tmp_path, number):
    with PseudoTerminal(command("--volume", tmp_path)) as terminal:
        terminal.wait_for_row("Ready.")
        # Every picture differs in all cells from the one before.
        terminal.send('10 PRINT 1\r20 FOR I=1 TO 1E9:COLOR I MOD 16,15:PRINT STRING$(255,65+I MOD 26);:NEXT\rRUN\r')
        deadline = time.monotonic() + 10
        while not has_rescued(tmp_path):
            terminal.receive(0.05)
            assert time.monotonic() < deadline
        time.sleep(2)  # nothing is read any more, and the terminal takes nothing any more
        os.kill(terminal.process, number)
        terminal.status = wait_for_end(terminal.process)
        assert terminal.status == 128 + number
        assert termios.tcgetattr(terminal.device) == terminal.settings
    assert has_rescued(tmp_path)


def sessions_of(process):
    try:
        with open(f"/proc/{process}/task/{process}/children", encoding="ascii") as file:
            return [int(word) for word in file.read().split()]
    except FileNotFoundError:
        return []


def is_running(process):
    try:
        with open(f"/proc/{process}/stat", encoding="ascii") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGINT])
def test_signals_at_any_moment_restore_the_terminal(tmp_path, number):
    for moment in range(14):
        with PseudoTerminal(command("--volume", tmp_path)) as terminal:
            terminal.receive(1)  # the first it sends, by which its signals are in force
            deadline = time.monotonic() + 0.02 * moment
            while time.monotonic() < deadline:
                terminal.receive(0.005)
            children = sessions_of(terminal.process)
            os.kill(terminal.process, number)
            if number == signal.SIGINT:
                time.sleep(1.2)  # the first Ctrl-C may find no prompt yet to be left
                try:
                    os.kill(terminal.process, number)
                except ProcessLookupError:
                    pass
            status = terminal.wait_for_end()
            assert status == (0 if number == signal.SIGINT else 128 + number), moment
            assert terminal.is_restored(), moment
            assert not any(is_running(child) for child in children)


def test_signals_in_a_row_end_it_once(tmp_path):
    with PseudoTerminal(command("--volume", tmp_path)) as terminal:
        terminal.wait_for_row("Ready.")
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGTERM, signal.SIGINT, signal.SIGQUIT):
            try:
                os.kill(terminal.process, number)
            except ProcessLookupError:
                break
        assert terminal.wait_for_end() >= 128 or terminal.status == 0
        assert terminal.is_restored()


def test_session_does_not_outlive_its_guard(tmp_path):
    for moment in range(8):
        with PseudoTerminal(command("--volume", tmp_path)) as terminal:
            terminal.receive(1)
            time.sleep(0.01 * moment)
            children = sessions_of(terminal.process)
            os.kill(terminal.process, signal.SIGKILL)
            terminal.wait_for_end()
            deadline = time.monotonic() + 5
            while any(is_running(child) for child in children):
                assert time.monotonic() < deadline
                time.sleep(0.05)


# ---- A prepared folder ------------------------------------------------------------------------------------------


def test_planted_rescue_files_are_left_alone(tmp_path):
    volume = tmp_path / "volume"
    volume.mkdir()
    other = write(tmp_path / "other.txt", "10 PRINT 1\n")
    os.mkfifo(volume / ".korvane-unsaved-1")
    (volume / ".korvane-unsaved-2").mkdir()
    (volume / ".korvane-unsaved-3").symlink_to(other)
    with socket.socket(socket.AF_UNIX) as server:
        os.chdir(volume)  # a socket's name must be short
        server.bind(".korvane-unsaved-4")
        os.chdir(ROOT)
        before = sorted((path.name, path.lstat().st_ino) for path in volume.iterdir())
        with PseudoTerminal(command("--volume", volume)) as terminal:
            terminal.wait_for_row("Ready.")
            assert "HELP" in terminal.screen()[0]
            terminal.send("FILES\r")
            terminal.wait_for(lambda: terminal.screen().count("Ready.") == 2)
            assert "korvane" not in "".join(terminal.screen()[6:])
            os.kill(terminal.process, signal.SIGTERM)
            terminal.wait_for_end()
        assert sorted((path.name, path.lstat().st_ino) for path in volume.iterdir()) == before
    assert other.read_text(encoding="ascii") == "10 PRINT 1\n"


@pytest.mark.parametrize("what", ["fifo", "link", "file"])
def test_planted_draft_is_not_written_through(tmp_path, what):
    """The number of the session's process is easily guessed."""
    volume = tmp_path / "volume"
    volume.mkdir()
    other = write(tmp_path / "other.txt", "precious")
    with PseudoTerminal(command("--volume", volume)) as terminal:
        terminal.wait_for_row("Ready.")
        (session,) = sessions_of(terminal.process)
        draft = volume / f".korvane-draft-{session}"
        if what == "fifo":
            os.mkfifo(draft)
        elif what == "link":
            draft.symlink_to(other)
        else:
            os.link(other, draft)
        terminal.send("10 PRINT 1\r")
        deadline = time.monotonic() + 10
        while not has_rescued(volume):
            terminal.receive(0.05)
            assert time.monotonic() < deadline
        terminal.send("PRINT 6*7\r")
        terminal.wait_for_row(" 42")
    assert other.read_text(encoding="ascii") == "precious"


@pytest.mark.parametrize("arguments", [
    ["--script", "pipe.bas"], ["pipe.bas"], ["--script", "folder.bas"], ["folder.bas"], ["--script", "loop.bas"], ["loop.bas"],
    ["--volume", "pipe.bas"], ["--volume", "loop.bas"], ["--volume", "none"], ["--volume", "x" * 5000],
    ["--script", "x" * 5000], ["--script", "huge.bas"], ["huge.bas"], ["--script", "/dev/zero"], ["--image", "loop.bas"],
    ["--image", "pipe.bas"], ["--image", "x" * 5000], ["--image", "p.txt"],
])  # fmt: skip
def test_what_is_no_program_is_named_in_one_line(tmp_path, arguments):
    os.mkfifo(tmp_path / "pipe.bas")
    (tmp_path / "folder.bas").mkdir()
    (tmp_path / "loop.bas").symlink_to("loop.bas")
    write(tmp_path / "p.txt", "10 PRINT 1\n")
    write(tmp_path / "huge.bas", "10 PRINT 1\n")
    os.truncate(tmp_path / "huge.bas", 1 << 40)
    done = subprocess.run(
        command(*arguments), stdin=subprocess.DEVNULL, capture_output=True, cwd=tmp_path, timeout=30, check=False
    )
    assert (done.returncode in (1, 2, 71), done.stdout) == (True, b""), done
    assert done.stderr.count(b"\n") == 1 and done.stderr.endswith(b"\n")


def test_folder_that_has_gone_is_told_in_one_line(tmp_path):
    gone = tmp_path / "gone"
    words = ["sh", "-c", 'mkdir "$1" && cd "$1" && rmdir "$1" && shift && exec "$@"', "sh", str(gone)]
    for arguments in (["p.bas"], ["--script", "p.bas"]):
        done = subprocess.run([*words, *command(*arguments)], stdin=subprocess.DEVNULL, capture_output=True, timeout=30,
                              check=False)  # fmt: skip
        assert done.returncode == 1 and done.stderr.count(b"\n") == 1, done


def test_file_of_the_session_may_change_while_it_is_open(tmp_path):
    write(tmp_path / "DATA.TXT", "".join(f"line {i}\n" for i in range(20000)))
    program = write(tmp_path / "p.bas", """\
10 OPEN "DATA.TXT" FOR INPUT AS #1
20 PRINT "OPEN"
30 LINE INPUT A$
40 IF EOF(1) THEN 70
50 LINE INPUT #1,B$:N=N+1
60 GOTO 40
70 PRINT "END";N>0
""")
    with subprocess.Popen(command("--script", program), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE) as process:  # fmt: skip
        assert process.stdout.readline() == b"OPEN\n"
        os.truncate(tmp_path / "DATA.TXT", 9000)
        rest, errors = process.communicate(b"go\n", timeout=30)
    # Either the end comes earlier or reading fails; nothing hangs and nothing crashes.
    assert b"machine fault" not in errors and process.returncode in (0, 1), errors
    assert b"END" in rest or errors
