"""A program that is in no file when the session ends is kept, and the next session says so."""

import os
import signal
import time

import pytest
from conftest import IMAGE, ROOT
from pseudo_terminal import PseudoTerminal
from test_hostile_host import is_running
from test_terminal import session_process

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"


def start(volume, *arguments, environment=None):
    command = [TERMINAL, "--image", IMAGE, "--volume", volume, *arguments]
    terminal = PseudoTerminal([str(word) for word in command], environment=environment)
    terminal.wait_for_row("Ready.")
    return terminal


def enter(terminal, *lines):
    for line in lines:
        terminal.send(line + "\r")
        terminal.wait_for(lambda: line in terminal.screen())


def enter_command(terminal, line):
    """A line that is answered with the prompt."""
    ready = terminal.screen().count("Ready.")
    terminal.send(line + "\r")
    terminal.wait_for(lambda: terminal.screen().count("Ready.") > ready)


def kept_files(volume):
    return [path for path in volume.iterdir() if path.name.startswith(".korvane")]


def wait_until_kept(volume):
    deadline = time.monotonic() + 10
    while not volume.exists() or not any("unsaved" in path.name for path in kept_files(volume)):
        assert time.monotonic() < deadline
        time.sleep(0.05)


def check_rescued(volume, text, name="RESCUE"):
    with start(volume) as terminal:
        terminal.wait_for(lambda: f'LOAD "{name}"' in terminal.screen()[0])
        assert (volume / f"{name}.BAS").read_bytes().decode() == text
        assert not kept_files(volume)
        enter_command(terminal, f'LOAD "{name}"')
        terminal.send("LIST\r")
        terminal.wait_for_row(text.splitlines()[0])
    # The notice comes once.
    with start(volume) as terminal:
        terminal.wait_for(lambda: "HELP" in terminal.screen()[0])


PROGRAM = '10 PRINT "é"\r\n20 GOTO 20\r\n'


def type_program(terminal):
    enter(terminal, '10 PRINT "é"', "20 GOTO 20")
    # Lines are taken one after the other: when this one is answered, those before it are in the program.
    enter_command(terminal, "PRINT 1")


def wait_until_gone(process):
    deadline = time.monotonic() + 20
    while is_running(process):
        assert time.monotonic() < deadline
        time.sleep(0.05)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_ending_signal_leaves_the_program(tmp_path, number):
    with start(tmp_path) as terminal:
        type_program(terminal)
        wait_until_kept(tmp_path)
        os.kill(terminal.process, number)
        assert terminal.wait_for_end() == 128 + number
    check_rescued(tmp_path, PROGRAM)


@pytest.mark.parametrize("who", ["guard", "session"])
def test_killed_processes_leave_the_program(tmp_path, who):
    with start(tmp_path) as terminal:
        type_program(terminal)
        session = session_process(terminal)
        os.kill(terminal.process if who == "guard" else session, signal.SIGKILL)
        terminal.wait_for_end()
    wait_until_gone(session)
    check_rescued(tmp_path, PROGRAM)


def test_closed_window_leaves_the_program(tmp_path):
    terminal = start(tmp_path)
    type_program(terminal)
    session = session_process(terminal)
    os.close(terminal.device)
    os.waitpid(terminal.process, 0)
    wait_until_gone(session)
    check_rescued(tmp_path, PROGRAM)


def test_fault_leaves_the_program(tmp_path):
    with start(tmp_path) as terminal:
        type_program(terminal)
        terminal.send("POKE 16,1\r")
        assert terminal.wait_for_end() == 1
    check_rescued(tmp_path, PROGRAM)


def test_program_that_runs_is_kept(tmp_path):
    with start(tmp_path) as terminal:
        # All of it comes at once, so that the interpreter never waits before the program runs.
        terminal.send('\x1b[200~10 PRINT "é"\r20 GOTO 20\rRUN\r\x1b[201~')
        terminal.wait_for_row("é")
        wait_until_kept(tmp_path)
        os.kill(terminal.process, signal.SIGTERM)
        terminal.wait_for_end()
    check_rescued(tmp_path, PROGRAM)


def test_ctrl_c_asks_and_then_leaves_the_program(tmp_path):
    with start(tmp_path) as terminal:
        type_program(terminal)
        time.sleep(0.3)
        terminal.send("\x03")
        terminal.wait_for(lambda: "not saved" in terminal.screen()[0])
        terminal.send("\x03")
        assert terminal.wait_for_end() == 0
    check_rescued(tmp_path, PROGRAM)


def test_key_after_the_question_stays(tmp_path):
    with start(tmp_path) as terminal:
        type_program(terminal)
        time.sleep(0.3)
        terminal.send("\x03")
        terminal.wait_for(lambda: "not saved" in terminal.screen()[0])
        terminal.send("P")
        terminal.wait_for(lambda: "HELP" in terminal.screen()[0])
        terminal.send("\x03")
        terminal.wait_for(lambda: "not saved" in terminal.screen()[0])
        terminal.send("RINT 6*7\r")
        terminal.wait_for_row(" 42")


@pytest.mark.parametrize("ending", ['SAVE "MINE.BAS"', "NEW", "DELETE 10-20"])
def test_saved_and_cleared_programs_are_left_at_once(tmp_path, ending):
    with start(tmp_path) as terminal:
        type_program(terminal)
        enter_command(terminal, ending)
        time.sleep(0.3)
        terminal.send("\x03")
        assert terminal.wait_for_end() == 0
    assert not kept_files(tmp_path)
    with start(tmp_path) as terminal:
        terminal.wait_for(lambda: "HELP" in terminal.screen()[0])


def test_loaded_program_is_saved_until_it_changes(tmp_path):
    (tmp_path / "mine.bas").write_text("10 PRINT 1\n", encoding="ascii")
    with start(tmp_path, tmp_path / "mine.bas") as terminal:
        terminal.wait_for_row(" 1")
        terminal.wait_for(lambda: terminal.screen().count("Ready.") == 3)
        time.sleep(0.3)
        assert not kept_files(tmp_path)
        enter(terminal, "20 PRINT 2")
        wait_until_kept(tmp_path)
        os.kill(terminal.process, signal.SIGTERM)
        terminal.wait_for_end()
    check_rescued(tmp_path, "10 PRINT 1\r\n20 PRINT 2\r\n")


def test_existing_files_stay_as_they_are(tmp_path):
    (tmp_path / "rescue.bas").write_text("10 PRINT 1\n", encoding="ascii")
    with start(tmp_path) as terminal:
        type_program(terminal)
        time.sleep(0.3)
        os.kill(terminal.process, signal.SIGTERM)
        terminal.wait_for_end()
    check_rescued(tmp_path, PROGRAM, "RESCUE2")
    assert (tmp_path / "rescue.bas").read_text(encoding="ascii") == "10 PRINT 1\n"


def test_session_beside_another_takes_nothing_of_it(tmp_path):
    with start(tmp_path) as first:
        type_program(first)
        wait_until_kept(tmp_path)
        with start(tmp_path) as second:
            second.wait_for(lambda: "HELP" in second.screen()[0])
            enter_command(second, "FILES")
            assert "korvane" not in "".join(second.screen()[6:])
        assert kept_files(tmp_path)


def test_users_folder_takes_what_the_volume_cannot(tmp_path):
    # Nobody can write there, the administrator included.
    with start("/proc/self", environment={"XDG_STATE_HOME": str(tmp_path)}) as terminal:
        type_program(terminal)
        wait_until_kept(tmp_path / "korvane")
        os.kill(terminal.process, signal.SIGTERM)
        terminal.wait_for_end()
    with start("/proc/self", environment={"XDG_STATE_HOME": str(tmp_path)}) as terminal:
        terminal.wait_for(lambda: "has been kept" in terminal.screen()[0])
        assert (tmp_path / "korvane" / "RESCUE.BAS").read_bytes().decode() == PROGRAM


def test_rescue_can_be_switched_off(tmp_path):
    with start(tmp_path, "--no-rescue") as terminal:
        type_program(terminal)
        time.sleep(1.5)
        assert not kept_files(tmp_path)
