"""The interpreter in a terminal, and at the end of a pipe."""

import os
import signal
import subprocess
import time

import pytest
from conftest import IMAGE, ROOT
from png import read_png
from pseudo_terminal import PseudoTerminal

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"


def command(volume, *arguments):
    return [str(TERMINAL), "--image", str(IMAGE), "--volume", str(volume), *map(str, arguments)]


def piped(lines, volume, *arguments):
    """The screen's rows after these lines; the session must end well."""
    result = subprocess.run(
        command(volume, *arguments), input=lines.encode(), capture_output=True, timeout=30, check=False
    )
    assert result.returncode == 0, result.stderr.decode()
    return result.stdout.decode().splitlines()


@pytest.fixture
def terminal(tmp_path):
    with PseudoTerminal(command(tmp_path)) as terminal:
        terminal.wait_for_row("Ready.")
        yield terminal


def session_process(terminal):
    """The child of the guarding process: the one in which the interpreter runs."""
    children = f"/proc/{terminal.process}/task/{terminal.process}/children"
    with open(children, encoding="ascii") as file:
        return int(file.read().split()[0])


# ---- Standard input is no terminal ------------------------------------------------------------------------------


def test_piped_line_prints_its_answer(tmp_path):
    rows = piped("PRINT 2^10\n", tmp_path)
    at = rows.index("PRINT 2^10")
    assert rows[at + 1 :] == [" 1024", "Ready."]


def test_empty_input_shows_banner_and_prompt(tmp_path):
    rows = piped("", tmp_path)
    assert "Korvane BASIC v2.0" in rows
    assert rows[-1] == "Ready."


def test_last_line_needs_no_line_end(tmp_path):
    assert piped("PRINT 1+1", tmp_path)[-2:] == [" 2", "Ready."]


def test_lines_of_other_systems_are_single_lines(tmp_path):
    assert piped("PRINT 1\r\nPRINT 2\r\n", tmp_path)[-6:] == ["PRINT 1", " 1", "Ready.", "PRINT 2", " 2", "Ready."]


def test_piped_lines_answer_input_statements(tmp_path):
    rows = piped('10 INPUT A$\n20 PRINT "<";A$;">"\nRUN\nhello\n', tmp_path)
    assert rows[-4:] == ["RUN", "? hello", "<hello>", "Ready."]


def test_lines_wait_until_a_running_program_ends(tmp_path):
    rows = piped("10 FOR I=1 TO 200000:NEXT\nRUN\nPRINT I\n", tmp_path)
    assert rows[-5:] == ["RUN", "Ready.", "PRINT I", " 200001", "Ready."]


KEY_LOOP = '10 A$=INKEY$:IF A$="" THEN 10\n20 PRINT "GOT ";A$\n'


def test_program_that_only_looks_for_a_key_gets_it(tmp_path):
    # The line's Enter is a key of its own, left for the prompt.
    assert piped(KEY_LOOP + "RUN\nq\n", tmp_path)[-5:] == ["RUN", "GOT q", "Ready.", "", "Ready."]


def test_session_ends_when_a_program_looks_for_a_key_in_vain(tmp_path):
    assert piped(KEY_LOOP + "RUN\n", tmp_path)[-1] == "RUN"


def test_program_is_on_the_volume_and_started(tmp_path):
    program = tmp_path / "hello.bas"
    program.write_text('10 PRINT "HELLO"\n', encoding="ascii")
    rows = piped("", tmp_path, program)
    assert rows[-2:] == ["HELLO", "Ready."]
    rows = piped("FILES\n", tmp_path, program)
    assert any("hello.bas" in row.lower() for row in rows[rows.index("FILES") :])


def test_characters_keep_their_look(tmp_path):
    assert piped('PRINT "é░π"\n', tmp_path)[-3:] == ['PRINT "é░π"', "é░π", "Ready."]


def run_piped(volume, *arguments, lines=""):
    return subprocess.run(
        command(volume, *arguments), input=lines.encode(), capture_output=True, timeout=30, check=False
    )


def test_rows_that_scroll_away_are_printed_too(tmp_path):
    rows = piped("10 FOR I=1 TO 1000:PRINT I:NEXT\nRUN\n", tmp_path)
    assert rows[0].startswith('"That brain')
    at = rows.index("RUN")
    assert rows[at + 1 :] == [f" {i}" for i in range(1, 1001)] + ["Ready."]


def test_rows_above_a_scrolling_area_stay(tmp_path):
    lines = '10 CLS:PRINT "TITLE":VIEW PRINT 2 TO 10\n20 FOR I=1 TO 50:PRINT I:NEXT\nRUN\n'
    rows = piped(lines, tmp_path)
    at = rows.index(" 1")
    # Row 1 stays on the screen, which is printed last.
    assert rows[at : at + 43] == [f" {i}" for i in range(1, 44)]
    assert rows[rows.index("TITLE") + 1 :] == [f" {i}" for i in range(44, 51)] + ["Ready."]


def test_rows_of_an_endless_program_come_while_it_runs(tmp_path):
    (tmp_path / "p.bas").write_text("10 PRINT 7\n20 GOTO 10\n", encoding="ascii")
    with subprocess.Popen(
        command(tmp_path, tmp_path / "p.bas"), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE
    ) as process:
        rows = [process.stdout.readline() for _ in range(500)]
        process.kill()
    assert rows[-1] == b" 7\n"


def test_output_that_cannot_be_written_is_a_status(tmp_path):
    with open("/dev/full", "wb") as full:
        done = subprocess.run(
            command(tmp_path), stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE, timeout=30, check=False
        )
    assert done.returncode == 74
    assert b"No space left" in done.stderr


def test_run_does_not_follow_a_load_that_failed(tmp_path):
    (tmp_path / "p.bas").write_text('10 PRINT "RAN"\nPRINT 2\n', encoding="ascii")
    done = run_piped(tmp_path, tmp_path / "p.bas", lines="PRINT 3*3\n")
    rows = done.stdout.decode().splitlines()
    assert done.returncode == 1
    assert "RUN" not in rows and "RAN" not in rows
    assert rows[-6:] == ['LOAD "p.bas"', "Direct statement in file", "Ready.", "PRINT 3*3", " 9", "Ready."]


@pytest.mark.parametrize("name", ["plain.bas", "no extension", "é.bas", 'qu"ote.bas', "two.dots.bas", "ÄÖ"])
def test_program_of_any_name_is_loaded_and_saved(tmp_path, name):
    program = tmp_path / name
    program.write_text('10 PRINT "é";1\n', encoding="utf-8")
    rows = piped("", tmp_path, program)
    assert rows[-2:] == ["é 1", "Ready."]
    load = next(row for row in rows if row.startswith("LOAD"))
    piped("20 PRINT 2\n" + load.replace("LOAD", "SAVE") + "\n", tmp_path, program)
    assert program.read_bytes().decode().replace("\r\n", "\n") == '10 PRINT "é";1\n20 PRINT 2\n'
    assert [path.name for path in tmp_path.iterdir()] == [name]


def test_linked_program_is_saved_where_the_link_leads(tmp_path):
    (tmp_path / "elsewhere").mkdir()
    real = tmp_path / "elsewhere" / "real.bas"
    real.write_text("10 PRINT 1\n20 PRINT 2\n", encoding="ascii")
    link = tmp_path / "link.bas"
    link.symlink_to("elsewhere/real.bas")
    rows = piped("", tmp_path, link)
    assert rows[-3:] == [" 1", " 2", "Ready."]
    load = next(row for row in rows if row.startswith("LOAD"))
    piped("20\n" + load.replace("LOAD", "SAVE") + "\n", tmp_path, link)
    assert link.is_symlink()
    assert real.read_bytes() == b"10 PRINT 1\r\n"


def test_programs_are_text_of_the_host(tmp_path):
    piped('10 PRINT "é▒ß"\nSAVE "OUT.BAS"\n', tmp_path)
    assert (tmp_path / "OUT.BAS").read_bytes() == '10 PRINT "é▒ß"\r\n'.encode()
    assert piped('LOAD "OUT.BAS"\nLIST\n', tmp_path)[-2:] == ['10 PRINT "é▒ß"', "Ready."]


def test_other_files_are_bytes(tmp_path):
    (tmp_path / "DATA.TXT").write_bytes("é\r\n".encode())
    rows = piped('OPEN "DATA.TXT" FOR INPUT AS #1:LINE INPUT #1,A$:PRINT LEN(A$):CLOSE #1\n', tmp_path)
    assert rows[-2] == " 2"
    piped('OPEN "OUT.TXT" FOR OUTPUT AS #1:PRINT #1,CHR$(130):CLOSE #1\n', tmp_path)
    assert (tmp_path / "OUT.TXT").read_bytes() == b"\x82\r\n"


def test_missing_program_is_one_clear_line(tmp_path):
    result = subprocess.run(
        command(tmp_path, tmp_path / "none.bas"), stdin=subprocess.DEVNULL, capture_output=True, check=False
    )
    assert result.returncode == 1
    assert result.stderr.decode() == f"korvane-terminal: there is no program {tmp_path / 'none.bas'}\n"


# ---- A terminal -------------------------------------------------------------------------------------------------


def test_screen_has_the_terminals_size(terminal):
    terminal.send("PRINT STRING$(80,42)\r")
    terminal.wait_for_row("*" * 80)


def test_typed_line_is_answered(terminal):
    terminal.send("PRINT 6*7\r")
    terminal.wait_for_row(" 42")


def test_cursor_keys_repair_a_line(terminal):
    terminal.send("PRIMT 5")
    terminal.send("\x1b[D" * 4 + "N" + "\r")
    terminal.wait_for_row(" 5")


def test_home_insert_delete_and_end(terminal):
    # Overtyped in insert mode at the start, a character deleted, one added at the end.
    terminal.send("XRINT 1")
    terminal.send("\x1b[H\x1b[3~\x1b[2~P\x1b[F2\r")
    terminal.wait_for_row(" 12")


def test_escape_breaks_a_program(terminal):
    terminal.send("10 GOTO 10\rRUN\r")
    terminal.wait_for_row("RUN")
    time.sleep(0.3)
    terminal.send("\x1b")
    terminal.wait_for_row("Break in 10")


def test_pasted_program_arrives_whole(terminal):
    lines = ["10 FOR I=1 TO 30000", "20 NEXT", "RUN", "30 PRINT 7*7", "RUN"]
    terminal.send("\x1b[200~" + "\r\n".join(lines) + "\r\n\x1b[201~")
    terminal.wait_for_row(" 49")
    assert all(line in terminal.screen() for line in lines)


def test_program_draws_while_it_runs(terminal):
    terminal.send('10 PRINT "NOW"\r20 GOTO 20\rRUN\r')
    terminal.wait_for_row("NOW")


def test_colours_are_shown(terminal):
    terminal.send("COLOR 255,128,0,0,0,64\r")
    terminal.wait_for(lambda: terminal.screen().count("Ready.") == 2)
    terminal.wait_for(lambda: ("255;128;0", "0;0;64") in terminal.colours.values())


def test_graphics_are_half_blocks(terminal):
    terminal.send("LINE (400,100)-(403,103),&HFF0000,BF\r")
    # The screen's row 6, under the line with the keys, begins at pixel 96: the box lies in the upper half of cell 50.
    terminal.wait_for(lambda: terminal.cells[7][50] == "▀")
    assert terminal.colours[7, 50] == ("255;0;0", "0;0;0")


def test_picture_of_the_terminal_shows_its_colours(terminal, tmp_path):
    terminal.send("LINE (400,160)-(639,191),&HFF8000,BF\r")
    terminal.wait_for(lambda: (terminal.colours.get((11, 50)) or (None, None))[1] == "255;128;0")
    terminal.screenshot(tmp_path / "terminal.png")
    width, height, pixels = read_png(tmp_path / "terminal.png")
    assert (width, height) == (640, 400)
    at = 3 * (181 * width + 405)
    assert pixels[at : at + 3] == bytes([255, 128, 0])


def test_larger_window_is_drawn_anew(terminal):
    terminal.set_size(100, 30)
    terminal.wait_for_row("Ready.")


def test_smaller_window_keeps_the_prompt_in_view(terminal):
    terminal.set_size(40, 6)
    terminal.send("PRINT 3\r")
    terminal.wait_for_row(" 3")


def test_ctrl_c_leaves_and_restores_the_terminal(terminal):
    terminal.send("\x03")
    assert terminal.wait_for_end() == 0
    assert terminal.is_restored()


def test_ctrl_c_stops_a_program_that_runs(terminal):
    terminal.send("10 GOTO 10\rRUN\r")
    terminal.wait_for_row("RUN")
    time.sleep(0.3)
    terminal.send("\x03")
    terminal.wait_for_row("Break in 10")
    terminal.send("PRINT 6*7\r")
    terminal.wait_for_row(" 42")


def test_ctrl_c_stops_a_program_that_waits(terminal):
    terminal.send("10 INPUT A\rRUN\r")
    terminal.wait_for_row("?")
    terminal.send("\x03")
    terminal.wait_for_row("Break in 10")


def test_ctrl_c_gives_the_rest_of_a_paste_up(terminal):
    terminal.send("\x1b[200~10 GOTO 10\rRUN\rPRINT 7*7\r\x1b[201~")
    terminal.wait_for_row("RUN")
    time.sleep(0.3)
    terminal.send("\x03")
    terminal.wait_for_row("Break in 10")
    terminal.send("PRINT 8*8\r")
    terminal.wait_for_row(" 64")
    assert " 49" not in terminal.screen()


def test_program_that_traps_the_break_is_left_with_the_third(terminal):
    terminal.send("10 ON BREAK GOTO 30\r20 GOTO 20\r30 RESUME\rRUN\r")
    terminal.wait_for_row("RUN")
    time.sleep(0.3)
    for _ in range(2):
        terminal.send("\x03")
        time.sleep(0.3)
    terminal.wait_for(lambda: "Ctrl-C again leaves" in terminal.screen()[0])
    terminal.send("\x03")
    assert terminal.wait_for_end() == 0
    assert terminal.is_restored()


def test_session_that_takes_nothing_is_left_by_a_second_ctrl_c(terminal):
    # Stopped, it is like one whose image looks at nothing any more.
    os.kill(session_process(terminal), signal.SIGSTOP)
    terminal.send("\x03")
    time.sleep(1.2)
    terminal.send("\x03")
    assert terminal.wait_for_end() == 0
    assert terminal.is_restored()


def test_bad_line_of_a_loaded_file_is_named(terminal, tmp_path):
    (tmp_path / "BAD.BAS").write_text("10 PRINT 1\n\nPRINT 2\n", encoding="ascii")
    terminal.send('LOAD "BAD"\r')
    terminal.wait_for_row("Direct statement in file")
    terminal.wait_for(lambda: "BAD.BAS, line 3: Direct statement in file" in terminal.screen()[0])
    terminal.send("P")
    terminal.wait_for(lambda: "HELP" in terminal.screen()[0])


def test_lost_characters_of_a_loaded_file_are_named(terminal, tmp_path):
    (tmp_path / "LOSS.BAS").write_text("10 PRINT 1\n20 '字\n", encoding="utf-8")
    terminal.send('LOAD "LOSS"\r')
    terminal.wait_for(lambda: "LOSS.BAS, line 2: '字'" in terminal.screen()[0])


# ---- The line above the screen ----------------------------------------------------------------------------------


def test_keys_are_named_above_the_screen(terminal):
    terminal.wait_for(lambda: all(word in terminal.screen()[0] for word in ("HELP", "Escape", "Ctrl-C")))
    # It is no part of the screen: clearing and filling that leaves it alone.
    terminal.send("CLS\r")
    terminal.wait_for(lambda: terminal.screen()[1] == "Ready.")
    terminal.send("FOR I=1 TO 60:PRINT I:NEXT\r")
    terminal.wait_for_row(" 60")
    assert "HELP" in terminal.screen()[0]


def test_screen_has_the_rows_below_the_line(terminal):
    # 25 rows in all.
    terminal.send("LOCATE 25,1\r")
    terminal.wait_for_row("Illegal function call")
    terminal.send("CLS:LOCATE 24,1:PRINT 5*5;:LOCATE 1,1\r")
    terminal.wait_for(lambda: terminal.screen()[-1] == " 25")


def test_line_can_be_switched_off(tmp_path):
    with PseudoTerminal(command(tmp_path, "--no-keys")) as terminal:
        terminal.wait_for_row("Ready.")
        assert terminal.screen()[1] == "    Ada Lovelace"
        terminal.send("10 PRINT 1\r")
        terminal.wait_for_row("10 PRINT 1")
        time.sleep(0.3)
        # A question is asked all the same.
        terminal.send("\x03")
        terminal.wait_for(lambda: "not saved" in terminal.screen()[0])
        terminal.send("X")
        terminal.wait_for(lambda: terminal.screen()[1] == "    Ada Lovelace")


def test_narrow_terminal_has_a_short_line(tmp_path):
    with PseudoTerminal(command(tmp_path), columns=45) as terminal:
        terminal.wait_for_row("Ready.")
        assert all(word in terminal.screen()[0] for word in ("HELP", "Esc", "Ctrl-C"))


# ---- However the session ends -----------------------------------------------------------------------------------


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT])
def test_ending_signals_restore_the_terminal(terminal, number):
    os.kill(terminal.process, number)
    assert terminal.wait_for_end() == 128 + number
    assert terminal.is_restored()


@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGABRT])
def test_end_of_the_session_restores_the_terminal(terminal, number):
    os.kill(session_process(terminal), number)
    assert terminal.wait_for_end() != 0
    assert terminal.is_restored()


def test_fault_of_a_program_is_reported_on_the_restored_terminal(terminal):
    terminal.send("POKE 16,1\r")
    assert terminal.wait_for_end() == 1
    assert terminal.is_restored()
    assert b"0x10" in terminal.received[terminal.received.rfind(b"\x1b[?1049l") :]
