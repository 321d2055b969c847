"""The interpreter at its prompt on real firmware: start-up, editing, running, breaking, input, errors."""

import re
import struct

import pytest


def wait_for_rows(machine, expected, timeout=30):
    """Waits until the screen reads exactly so, from its first row on; the cursor is a full block."""
    return machine.wait_for(
        lambda screen: screen.rows()[: len(expected)] == expected, timeout, "the rows " + repr(expected)
    )


def test_banner_tells_name_and_free_bytes(machine):
    rows = machine.screen().rows()
    quotation, attribution, blank, name, free, second_blank, ready, cursor = rows[:8]
    assert quotation and attribution
    assert (blank, name, second_blank, ready, cursor) == ("", "Korvane BASIC v2.0", "", "Ready.", "█")
    assert re.fullmatch(r"\d{1,3}(,\d{3})* bytes free\.", free)
    # The largest free region of a machine of 512 MiB.
    assert 100 << 20 < int(free.split()[0].replace(",", "")) < 512 << 20
    assert not any(rows[8:])


def test_direct_line_prints_its_answer(prompt):
    prompt.type_line("PRINT 2^10")
    wait_for_rows(prompt, ["Ready.", "PRINT 2^10", " 1024", "Ready.", "█"])


def test_program_is_stored_listed_and_run(prompt):
    prompt.type_line("20 NEXT")
    prompt.type_line("10 FOR I=1 TO 3:PRINT I;")
    prompt.type_line("LIST")
    prompt.type_line("RUN")
    wait_for_rows(
        prompt,
        ["Ready.", "20 NEXT", "10 FOR I=1 TO 3:PRINT I;", "LIST", "10 FOR I=1 TO 3:PRINT I;", "20 NEXT"]
        + ["Ready.", "RUN", " 1  2  3 Ready.", "█"],
    )


def test_line_is_repaired_in_place_with_the_cursor_keys(prompt):
    prompt.type_line('10 PRIMT "YES"')
    prompt.type_line("RUN")
    wait_for_rows(prompt, ["Ready.", '10 PRIMT "YES"', "RUN"])
    prompt.wait_for(lambda screen: " in 10\n" in screen.text() and "█" in screen.rows(), what="the error")
    rows = prompt.screen().rows()
    for _ in range(rows.index("█") - 1):
        prompt.press("up")
    for _ in range(6):
        prompt.press("right")
    prompt.type_line("N")
    for _ in range(rows.index("█") - 2):
        prompt.press("down")
    prompt.type_line("RUN")
    prompt.wait_for_row("YES")
    assert prompt.screen().rows()[1] == '10 PRINT "YES"'


def test_escape_breaks_a_running_program(prompt):
    prompt.type_line("10 GOTO 10")
    prompt.type_line("RUN")
    wait_for_rows(prompt, ["Ready.", "10 GOTO 10", "RUN", ""])
    prompt.press("esc")
    prompt.wait_for_row("Break in 10")


def test_input_is_answered(prompt):
    prompt.type_line('10 INPUT "Name";A$:PRINT "Hello ";A$')
    prompt.type_line("RUN")
    prompt.wait_for(lambda screen: screen.rows()[3].startswith("Name?"), what="the question")
    prompt.type_line("World")
    wait_for_rows(prompt, ["Ready.", '10 INPUT "Name";A$:PRINT "Hello ";A$', "RUN", "Name? World", "Hello World"])


def test_error_tells_its_line(prompt):
    prompt.type_line("30 PRINT 1/0")
    prompt.type_line("RUN")
    prompt.wait_for_row("Division by zero in 30")


@pytest.mark.parametrize("width, height", [(1024, 768), (800, 600)])
def test_screen_changes_the_resolution(prompt, width, height):
    prompt.type_line(f"SCREEN {width},{height}")
    screen = prompt.wait_for(lambda screen: (screen.width, screen.height) == (width, height), what="the mode")
    prompt.type_line("?STRING$(%d,42)" % (width // 8))
    # The stars fill a row to its end, so the line end that follows leaves one row blank.
    wait_for_rows(prompt, ["Ready.", "?STRING$(%d,42)" % (width // 8), "*" * (width // 8), "", "Ready.", "█"])
    assert len(screen.rows()) == height // 16


def test_colour_reaches_the_screen(prompt):
    prompt.type_line("LINE (640,400)-(700,460),&H123456,BF")
    screen = prompt.wait_for(lambda screen: screen.pixel(640, 400) == 0x123456, what="the box")
    assert screen.pixel(700, 460) == 0x123456
    assert screen.pixel(701, 461) == 0


def test_screenshot_is_a_picture_of_the_mode(prompt, tmp_path):
    picture = tmp_path / "screen.png"
    prompt.screenshot(picture)
    data = picture.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    assert struct.unpack(">II", data[16:24]) == (1280, 800)
