"""A program run as a script: its text on standard output, its messages on standard error, a status."""

import os
import subprocess
import time

import pytest
from conftest import IMAGE, ROOT

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"


@pytest.fixture
def script(tmp_path):
    """Runs lines (or bytes) as a script; the finished process, with bytes of output."""

    def run(program, *arguments, lines="", name="p.bas", options=()):
        file = tmp_path / name
        file.write_bytes(program if isinstance(program, bytes) else program.encode())
        return subprocess.run(
            [TERMINAL, "--image", IMAGE, *options, "--script", file, *arguments],
            input=lines.encode(), capture_output=True, timeout=60, check=False,
        )  # fmt: skip

    return run


def output(done):
    assert (done.returncode, done.stderr) == (0, b""), done
    return done.stdout.decode()


# ---- Text --------------------------------------------------------------------------------------------------------


def test_text_of_the_program_is_all_there_is(script):
    assert output(script('10 PRINT "A";1;\n20 PRINT -2.5\n30 PRINT "B";\n')) == "A 1 -2.5 \nB"


def test_no_output_is_none(script):
    assert output(script("10 A=1\n")) == ""


def test_long_lines_are_not_broken(script):
    program = '10 FOR I=1 TO 9:PRINT STRING$(100,"x");:NEXT:PRINT "!"\n20 PRINT TAB(200);"T"\n'
    assert output(script(program)) == "x" * 900 + "!\n" + " " * 199 + "T\n"


def test_trailing_blanks_and_empty_lines_stay(script):
    assert output(script('10 PRINT "A  "\n20 PRINT\n30 PRINT SPC(3);\n40 PRINT\n')) == "A  \n\n   \n"


def test_many_lines(script):
    assert output(script("10 FOR I=1 TO 300:PRINT I:NEXT\n")) == "".join(f" {i} \n" for i in range(1, 301))


def test_characters_of_the_code_page_are_utf_8(script):
    assert output(script('10 PRINT "é░π";CHR$(1);CHR$(255);"|"\n')) == "é░π☺ |\n"


def test_locate_and_cls_begin_lines_and_columns(script):
    program = """\
10 PRINT "A";:LOCATE 5,4:PRINT "B"
20 PRINT "C";:LOCATE ,6:PRINT "D";:LOCATE ,2:PRINT "E"
30 PRINT "F";:CLS:PRINT "G"
40 LOCATE CSRLIN,POS(0):PRINT "H"
"""
    assert output(script(program)) == "A\n   B\nC    D\n E\nF\nG\nH\n"


def test_text_windows_have_lines_of_their_own(script):
    program = '10 TXTWINDOW @1,1,1,9,20:TXTWINDOW @2,12,1,18,20\n20 PRINT "A";:PRINT @1,"B":PRINT @2,"LONGER LINE"\n30 PRINT "C"\n'
    done = script(program)
    assert done.stdout.decode() == "A\nB\nLONGER LINE\nC\n", done


def test_graphics_are_left_out(script):
    assert output(script('10 LINE (0,0)-(99,99),&HFF0000,BF\n20 CIRCLE (50,50),20\n30 PRINT "A"\n')) == "A\n"


def test_output_comes_while_the_program_runs(tmp_path):
    (tmp_path / "p.bas").write_text('10 PRINT "NOW"\n20 GOTO 20\n', encoding="ascii")
    command = [TERMINAL, "--image", IMAGE, "--script", tmp_path / "p.bas"]
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE) as process:
        assert process.stdout.readline() == b"NOW\n"
        process.kill()


# ---- Input -------------------------------------------------------------------------------------------------------


def test_input_is_not_echoed(script):
    program = '10 INPUT "Name";N$\n20 LINE INPUT L$\n30 INPUT A,B\n40 PRINT N$;"/";L$;A+B\n'
    assert output(script(program, lines="Ann\na, b\r\n1,2")) == "Name? ? Ann/a, b 3 \n"


def test_characters_and_tabs_of_input(script):
    assert output(script("10 LINE INPUT A$:PRINT A$;LEN(A$)\n", lines="né\tx\n")) == "né x 4 \n"


def test_single_keys_come_one_by_one(script):
    assert output(script('10 A$=INPUT$(3):LINE INPUT B$:PRINT A$;"/";B$\n', lines="abcde\n")) == "abc/de\n"
    keys = '10 K$=INKEY$:IF K$="" THEN 10\n20 PRINT K$;:IF K$<>"q" THEN 10\n'
    assert output(script(keys, lines="abq")) == "abq"


def test_end_of_input_ends_a_program_that_waits(script):
    done = script('10 INPUT A\n20 PRINT "not here"\n')
    assert (done.returncode, done.stdout) == (1, b"? ")
    assert b"waits for more input" in done.stderr


def test_refused_replies_are_told_on_standard_error(script):
    done = script("10 INPUT A\n20 PRINT A\n", lines="x\n7,8\n")
    assert (done.returncode, done.stdout) == (0, b"? ?  7 \n")
    assert done.stderr == b"?Redo from start\nExtra ignored\n"


# ---- How it ends -------------------------------------------------------------------------------------------------


@pytest.mark.parametrize("program, message", [
    ("10 PRINT 1\n20 PRINT 1/0\n", "Division by zero in 20"),
    ('10 PRINT 1\n20 A="x"\n', "Type mismatch in 20"),
    ("10 PRINT 1\n20 GOTO 5\n", "Undefined line number in 20"),
])  # fmt: skip
def test_error_is_told_with_its_line(script, program, message):
    done = script(program)
    assert (done.returncode, done.stdout) == (1, b" 1 \n")
    assert done.stderr.decode() == message + "\n"


@pytest.mark.parametrize("program", ["10 END\n20 PRINT 1/0\n", "10 GOSUB 30\n20 END\n30 RETURN\n", ""])
def test_programs_that_end(script, program):
    assert output(script(program)) == ""


def test_stop_is_no_error(script):
    done = script("10 PRINT 1\n20 STOP\n")
    assert (done.returncode, done.stdout, done.stderr) == (0, b" 1 \n", b"Break\n")


def test_trapped_error_goes_on(script):
    done = script('10 ON ERROR GOTO 40\n20 PRINT 1/0\n30 PRINT "ON":END\n40 RESUME NEXT\n')
    assert (done.returncode, done.stdout, done.stderr) == (0, b"ON\n", b"Division by zero in 20\n")


def test_handler_that_ends_the_program_is_no_error(script):
    done = script("10 ON ERROR GOTO 30\n20 PRINT 1/0\n30 END\n")
    assert (done.returncode, done.stderr) == (0, b"Division by zero in 20\n")


def test_fault_of_the_machine_is_an_error(script):
    done = script("10 PRINT 1\n20 POKE 16,1\n")
    assert (done.returncode, done.stdout) == (1, b" 1 \n")
    assert b"machine fault" in done.stderr


def test_full_device_ends_with_a_status(tmp_path):
    (tmp_path / "p.bas").write_text("10 PRINT 1:GOTO 10\n", encoding="ascii")
    with open("/dev/full", "wb") as full:
        command = [TERMINAL, "--image", IMAGE, "--script", tmp_path / "p.bas"]
        done = subprocess.run(
            command, stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE, timeout=30, check=False
        )
    assert done.returncode == 74
    assert done.stderr.decode() == "korvane-terminal: cannot write the output: No space left on device\n"


def test_closed_pipe_ends_an_endless_program(tmp_path):
    (tmp_path / "p.bas").write_text("10 PRINT 1:GOTO 10\n", encoding="ascii")
    command = [TERMINAL, "--image", IMAGE, "--script", tmp_path / "p.bas"]
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
        assert process.stdout.readline() == b" 1 \n"
        process.stdout.close()
        assert process.wait(timeout=30) in (74, -13)
        assert process.stderr.read() == b""


# ---- What it runs ------------------------------------------------------------------------------------------------


def test_arguments_reach_the_program(script):
    program = '10 FOR I=1 TO COMMANDLINEARGC-1:PRINT "<";COMMANDLINEARG$(I);">":NEXT\n'
    assert output(script(program, "a b", "", "é", "--help", "-x")) == "<a b>\n<>\n<é>\n<--help>\n<-x>\n"


def test_arguments_keep_their_number(script):
    program = '10 FOR I=1 TO COMMANDLINEARGC-1:PRINT COMMANDLINEARG$(I);"|";:NEXT\n'
    shown = output(script(program, 'a"b', "", "x y", 'c "d e" f', '"q"', "é", '"'))
    assert shown == "a\"b||x y|c 'd e' f|'q'|é|'|"
    many = script("10 PRINT COMMANDLINEARGC;LEN(COMMANDLINEARG$(1))\n", "x" * 300, *map(str, range(2, 41)))
    assert output(many) == " 32  255 \n"


def test_script_knows_its_own_name(script):
    assert output(script("10 PRINT COMMANDLINEARG$(0)\n")).endswith("p.bas\n")


def test_files_are_in_the_programs_folder(script, tmp_path):
    assert output(script('10 OPEN "OUT.TXT" FOR OUTPUT AS #1:PRINT #1,"X":CLOSE #1\n')) == ""
    assert (tmp_path / "OUT.TXT").read_bytes() == b"X\r\n"


@pytest.mark.parametrize("ending, status", [("", 0), ("20 PRINT 1/0\n", 1), ("20 STOP\n", 0)])
def test_files_that_a_program_leaves_open_are_complete(script, tmp_path, ending, status):
    done = script('10 OPEN "OUT.TXT" FOR OUTPUT AS #1:PRINT #1,"X"\n' + ending)
    assert done.returncode == status
    assert (tmp_path / "OUT.TXT").read_bytes() == b"X\r\n"


def test_startup_program_of_the_folder_is_not_run(script, tmp_path):
    (tmp_path / "STARTUP.BAS").write_text('10 PRINT "START"\n20 GOTO 20\n', encoding="ascii")
    assert output(script('10 PRINT "A"\n')) == "A\n"


def test_size_is_the_screens(script):
    assert output(script('10 PRINT TAB(90);"A"\n', options=["--size", "80x25"])) == " " * 9 + "A\n"


@pytest.mark.parametrize("name", ["no extension", "é.bas", 'qu"ote.bas', "many.dots.txt", " blank .bas", "a" * 140 + ".bas"])
def test_any_file_name_will_do(script, name):
    assert output(script("10 PRINT 7\n", name=name)) == " 7 \n"


def test_link_is_followed(script, tmp_path):
    (tmp_path / "elsewhere").mkdir()
    (tmp_path / "elsewhere" / "real.bas").write_text("10 PRINT 8\n", encoding="ascii")
    link = tmp_path / "link.bas"
    link.symlink_to("elsewhere/real.bas")
    done = subprocess.run(
        [TERMINAL, "--image", IMAGE, "--script", link], stdin=subprocess.DEVNULL, capture_output=True, check=False
    )
    assert output(done) == " 8 \n"


@pytest.mark.parametrize("given", ["HELLO", "hello", "Hello.Bas", "hello.bas"])
def test_names_are_found_as_load_finds_them(tmp_path, given):
    (tmp_path / "hello.bas").write_text("10 PRINT 9\n", encoding="ascii")
    done = subprocess.run(
        [TERMINAL, "--image", IMAGE, "--script", given], cwd=tmp_path, stdin=subprocess.DEVNULL, capture_output=True,
        check=False,
    )  # fmt: skip
    assert output(done) == " 9 \n"


@pytest.mark.parametrize("program", [
    b'\xef\xbb\xbf10 PRINT "\xc3\xa9"\n',
    b'10 PRINT "\xc3\xa9"\n\x1a',
    b'10 PRINT "\x82"\r\n\x1a\x1a',
    b'10\tPRINT\t"\x82"\n \t \n\n',
    b'   10 PRINT "\xc3\xa9"\r',
])  # fmt: skip
def test_encodings_and_blanks_of_program_files(script, program):
    assert output(script(program)) == "é\n"


@pytest.mark.parametrize("encoding", ["utf-16", "utf-16-le", "utf-16-be"])
def test_utf_16_is_refused_with_a_clear_line(script, encoding):
    done = script("10 PRINT 1\n".encode(encoding))
    assert (done.returncode, done.stdout) == (1, b"")
    assert done.stderr.count(b"\n") == 1 and b"UTF-16" in done.stderr and b"p.bas" in done.stderr


@pytest.mark.parametrize("program, fault", [
    ("10 PRINT 1\n\n  PRINT 2\n", "line 3: Direct statement in file"),
    ("10 PRINT 1\n4294967295 PRINT 2\n", "line 2: Line number too large"),
    ("10 PRINT 1\n20 " + "x" * 245 + "\n", "line 2: Line too long"),
])  # fmt: skip
def test_bad_line_of_the_file_is_named(script, program, fault):
    done = script(program)
    assert (done.returncode, done.stdout) == (1, b"")
    assert done.stderr.decode().endswith(f"p.bas: {fault}\n")


@pytest.mark.parametrize("program", ["4294967294 PRINT 2\n", "20 '" + "x" * 243 + "\n30 PRINT 2\n"])
def test_lines_at_the_limit_are_good(script, program):
    assert output(script(program)) == " 2 \n"


def test_lost_characters_are_told(script):
    done = script('10 PRINT 1\n20 PRINT "字"\n')
    assert (done.returncode, done.stdout) == (0, b" 1 \n?\n")
    assert "line 2: '字'" in done.stderr.decode()


def test_missing_program_is_named(tmp_path):
    command = [TERMINAL, "--image", IMAGE, "--script", tmp_path / "none.bas"]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    assert (done.returncode, done.stdout) == (1, b"")
    assert done.stderr.decode() == f"korvane-terminal: there is no program {tmp_path / 'none.bas'}\n"


def test_script_through_dev(tmp_path):
    (tmp_path / "p.bas").write_text("10 PRINT COMMANDLINEARG$(1):PRINT 1/0\n", encoding="ascii")
    done = subprocess.run(
        [ROOT / "dev", "run", "--script", "p.bas", "--help"], cwd=tmp_path, stdin=subprocess.DEVNULL,
        capture_output=True, check=False, timeout=120, env=os.environ | {"KORVANE_SKIP_PACKAGES": "1"},
    )  # fmt: skip
    assert (done.returncode, done.stdout) == (1, b"--help\n")
    assert done.stderr.decode().endswith("Division by zero in 10\n")


def test_interrupt_ends_a_script(tmp_path):
    (tmp_path / "p.bas").write_text('10 PRINT "NOW"\n20 GOTO 20\n', encoding="ascii")
    command = [TERMINAL, "--image", IMAGE, "--script", tmp_path / "p.bas"]
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE) as process:
        process.stdout.readline()
        time.sleep(0.1)
        process.terminate()
        assert process.wait(timeout=10) == -15
