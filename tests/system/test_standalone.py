"""CREATEEFI on real firmware: the image it makes boots into its program and gives the machine back."""

from conftest import BOOT_TIMEOUT, IMAGE, boot, make_disk
from woken_machine import wake

GAME = b"""\
10 COLOR 14,1:CLS:PRINT "THE GAME BEGINS"
20 PRINT "Press a key"
30 IF INKEY$="" THEN 30
40 PRINT "THE GAME ENDS"
"""

# OVMF's front page, which it shows when a boot option has ended well: the size of its screen, and how far below the
# top of its menu the entry "Reset" stands.
FRONT_PAGE = (640, 480)
STEPS_TO_RESET = 5


def test_created_image_boots_into_its_program_and_returns_to_the_firmware(tmp_path):
    disk = make_disk(tmp_path, files={"GAME.BAS": GAME})
    with boot(disk) as machine:
        machine.type_line('LOAD "GAME')
        machine.type_line('CREATEEFI "GAME"')
        machine.wait_for_row("Created GAME.efi")
    disk.check()
    standalone = disk.get_bytes("GAME.efi")
    lines = [line.split(b" ", 1) for line in GAME.splitlines()]
    packed = b"BAS2" + len(lines).to_bytes(4, "little")
    for number, text in lines:
        packed += int(number).to_bytes(4, "little") + len(text).to_bytes(4, "little") + text
    trailer = b"KORVANE2-PACKED!" + len(packed).to_bytes(8, "little")
    assert standalone == IMAGE.read_bytes() + packed + trailer

    folder = tmp_path / "stick"
    folder.mkdir()
    image = folder / "game.efi"
    image.write_bytes(standalone)
    stick = make_disk(folder, image, {"STARTUP.BAS": b'10 PRINT "NOT THIS"\r\n'})
    with wake(stick) as machine:
        see_game(machine)
        machine.press("x")
        machine.wait_for(
            lambda screen: (screen.width, screen.height) == FRONT_PAGE, BOOT_TIMEOUT, "the firmware's front page"
        )
        # The firmware is alive: its menu restarts the machine, which boots into the program again.
        for _ in range(STEPS_TO_RESET):
            machine.press("down")
        machine.press("ret")
        see_game(machine)


def see_game(machine):
    """The program has the screen to itself: neither banner nor prompt, and no STARTUP.BAS."""
    screen = machine.wait_for(
        lambda screen: "Press a key" in screen.rows(), BOOT_TIMEOUT, "the program's screen"
    )
    assert screen.rows()[:2] == ["THE GAME BEGINS", "Press a key"]
    assert not any(screen.rows()[2:])
