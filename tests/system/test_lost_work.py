"""What must not cost a user any work, on real firmware: the running image stays, whatever it is called; a directory
that has gone ends nothing; a full disk leaves a clean beginning; a stick that was pulled out and is back can be used."""

import itertools

import pytest
from conftest import IMAGE, boot, make_disk
from disk_image import BOOT_FILE
from qemu_machine import MachineError

numbers = itertools.count(1)


def answer_to(machine, line, timeout=60):
    """Types a line and returns the rows that it prints, without the prompt."""
    mark = f" {next(numbers)}"
    machine.type_line(f"CLS:PRINT{mark}:{line}")
    screen = machine.wait_for(
        lambda screen: screen.rows()[0] == mark and [row for row in screen.rows() if row][-2:] == ["Ready.", "█"],
        timeout, "the answer to " + line)  # fmt: skip
    return [row for row in screen.rows()[1:] if row not in ("", "Ready.", "█")]


# Every spelling under which the FAT driver finds the boot file.
SPELLINGS = [
    r"\EFI\BOOT\BOOTX64.EFI",
    r"EFI/BOOT/BOOTX64",
    r"\EFI\BOOT\..\BOOT\BOOTX64.EFI",
    r".\EFI\.\BOOT\bootx64.efi",
    r"\efi\\boot\BootX64.EFI.",
    r"\EFI.\BOOT \BOOTX64.EFI . .",
    r"\ EFI\ BOOT\ BOOTX64.EFI",
]
SPELLINGS_IN_BOOT = ["BOOTX64", "bootx64.efi", r".\BOOTX64.EFI", r"..\BOOT\BOOTX64.EFI"]


def test_the_running_image_stays_under_every_spelling(tmp_path):
    disk = make_disk(tmp_path)
    with boot(disk) as machine:
        machine.type_line('10 PRINT "PACKED"')
        for spelling in SPELLINGS:
            assert answer_to(machine, f'CREATEEFI "{spelling}"') == ["Bad file name"], spelling
        assert answer_to(machine, f'SAVE "{SPELLINGS[2]}"') == ["Bad file name"]
        machine.type_line(r'CHDIR "\EFI\BOOT"')
        for spelling in SPELLINGS_IN_BOOT:
            assert answer_to(machine, f'CREATEEFI "{spelling}"') == ["Bad file name"], spelling
        # The same name in other directories is another file.
        assert answer_to(machine, r'CREATEEFI "..\BOOTX64"') == [r"Created ..\BOOTX64.efi"]
        assert answer_to(machine, r'CREATEEFI "\BOOTX64"') == [r"Created \BOOTX64.efi"]
        assert answer_to(machine, r'CREATEEFI "\BOOTX64"') == [r"Created \BOOTX64.efi"]
    disk.check()
    image = IMAGE.read_bytes()
    assert disk.get_bytes(BOOT_FILE) == image
    for copy in ("EFI/BOOTX64.efi", "BOOTX64.efi"):
        assert disk.get_bytes(copy).startswith(image)


def test_directories_that_go_and_directories_that_are_no_files(tmp_path):
    disk = make_disk(tmp_path, files={"A.BAS": b"10 PRINT 1\r\n"})
    with boot(disk) as machine:
        machine.type_line("10 REM WORK")
        assert answer_to(machine, r'MKDIR "SUB":CHDIR "SUB":RMDIR "..\SUB"') == []
        assert answer_to(machine, r'SAVE "\WORK.BAS"') == []
        assert answer_to(machine, 'SAVE "LOST.BAS"') == ["Bad file name"]
        assert answer_to(machine, r'FILES "\*.BAS"') == ["A.BAS", "WORK.BAS"]
        assert answer_to(machine, r'SAVE "..\OUT.BAS"') == []
        assert answer_to(machine, 'CHDIR ".."') == []
        assert answer_to(machine, 'FILES "*.BAS"') == ["A.BAS", "WORK.BAS", "OUT.BAS"]
        assert answer_to(machine, 'MKDIR "SUB":CHDIR "SUB":RMDIR ".":CHDIR ".."') == []
        # A directory above the current one is not empty, and the root is the root.
        assert answer_to(machine, r'MKDIR "ONE":CHDIR "ONE":MKDIR "TWO":CHDIR "TWO":RMDIR ".."') == [
            "Path/File access error"
        ]
        assert answer_to(machine, r'CHDIR "\":RMDIR "."') == ["Path/File access error"]
        assert answer_to(machine, r'KILL "\"') == ["File not found"]

        for line in (r'LOAD "ONE\."', r'LOAD "\."', 'MERGE "ONE"', r'CHAIN "ONE\TWO",,ALL', 'CHAIN ".",,ALL'):
            assert answer_to(machine, line) == ["File not found"], line
        assert answer_to(machine, r'SAVE "ONE\TWO"') == ["Bad file name"]
        assert answer_to(machine, r'OPEN "ONE\TWO" FOR APPEND AS 1') == ["Bad file name"]
        assert answer_to(machine, r'FILES "ONE\*"') == ["TWO"]
        assert answer_to(machine, r'SAVE "\STILL.BAS"') == []
    disk.check()
    for name in ("WORK.BAS", "OUT.BAS", "STILL.BAS"):
        assert disk.get_bytes(name) == b"10 REM WORK\r\n"


def test_a_full_disk_leaves_a_clean_beginning(tmp_path):
    lines = [f'{number} PRINT "{"X" * 60}"' for number in range(10, 1000, 10)]
    program = "".join(line + "\r\n" for line in lines).encode()
    disk = make_disk(tmp_path, files={"WORK.BAS": program, "OLD.BAS": b"10 REM OLD\r\n"})
    # Room for four sectors, of one cluster each, beside the old program's own.
    disk.fill(4)
    with boot(disk) as machine:
        machine.type_line('LOAD "WORK')
        assert answer_to(machine, 'SAVE "OLD.BAS"') == []
        rows = answer_to(machine, 'OPEN "OLD.BAS" FOR INPUT AS 1:PRINT LOF(1):CLOSE 1')
        assert answer_to(machine, 'CREATEEFI "GAME"') == ["Disk I/O error"]
        assert answer_to(machine, 'KILL "FILLER.BIN":SAVE "WHOLE.BAS"') == []
    disk.check()
    saved = disk.get_bytes("OLD.BAS")
    assert rows == [f" {len(saved)}"]
    assert 0 < len(saved) < len(program)
    assert program.startswith(saved)
    assert disk.get_bytes("WHOLE.BAS") == program
    assert not any("GAME" in name.upper() for name in disk.names())


def type_until(machine, line, rows):
    """Types a line until it is answered so. Firmware that looks at new devices takes no keys meanwhile, and may lose some."""

    def is_answered(_):
        try:
            return answer_to(machine, line, 20) == rows
        except MachineError:
            machine.press("esc")
            return False

    machine.wait_for(is_answered, 180, f"{rows} as the answer to {line}")


@pytest.mark.parametrize("new_port", [1, 2])
def test_a_stick_that_is_back_can_be_used(tmp_path, new_port):
    disk = make_disk(tmp_path, files={"GAMES/A.BAS": b"10 PRINT 1\r\n"}, folders=["GAMES"])
    usb = ["-device", "qemu-xhci,id=usb", "-device", "usb-storage,id=stick,bus=usb.0,port=1,drive=stick-image"]
    image = ["-blockdev", f"driver=raw,node-name=stick-image,file.driver=file,file.filename={disk.path}"]
    with boot(None, arguments=image + usb) as machine:
        machine.type_line("10 REM WORK")
        assert answer_to(machine, 'CHDIR "GAMES":SAVE "ONE.BAS"') == []
        machine.command("device_del", id="stick")
        type_until(machine, 'SAVE "TWO.BAS"', ["Bad file name"])
        machine.command("device_add", driver="usb-storage", id="again", bus="usb.0", port=str(new_port),
                        drive="stick-image")  # fmt: skip
        type_until(machine, 'SAVE "TWO.BAS"', [])
        assert answer_to(machine, "FILES") == ["A.BAS", "ONE.BAS", "TWO.BAS"]
    disk.check()
    assert disk.get_bytes("GAMES/TWO.BAS") == b"10 REM WORK\r\n"
