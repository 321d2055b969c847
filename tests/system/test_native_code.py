"""Machine code that is made while programs run, on real firmware: plain, under Secure Boot, and in a standalone image.

While an endless loop runs, the processor is asked again and again where it is. A place in loader code whose bytes are not
those of the image file is code that the interpreter has made: firmware's own code is of other types.
"""

import re
import subprocess
import time

import pytest
from conftest import BOOT_TIMEOUT, IMAGE, boot, make_disk
from qemu_machine import Machine
from test_secure_boot import CODE, SMM, TERMINAL, VARIABLES, sign

# Most statements are long: the machine is stopped most easily where firmware looks at the keyboard, and that must be rare.
LOOP = b'10 PRINT "begins"\r\n20 FOR I=1 TO 1E12:S=S+I' + 25 * b"+I-I" + b":NEXT\r\n"
SAMPLES = 60
CODE_BYTES = 24  # enough to tell code from other code


@pytest.fixture(scope="module")
def signed_loop(tmp_path_factory):
    """The loop as a signed standalone image."""
    folder = tmp_path_factory.mktemp("signing")
    lines = LOOP + b'CREATEEFI "GAME"\n'
    subprocess.run([TERMINAL, "--image", IMAGE, "--volume", folder], input=lines, check=True, stdout=subprocess.DEVNULL)
    return sign(folder)


def monitor(machine, line):
    return machine.command("human-monitor-command", **{"command-line": line})


def sample(machine):
    """Addresses at which the processor was, with the bytes there."""
    places = []
    for _ in range(SAMPLES):
        machine.command("stop")
        address = int(re.search(r"RIP=([0-9a-f]+)", monitor(machine, "info registers"))[1], 16)
        dump = monitor(machine, f"x /{CODE_BYTES}xb 0x{address:x}")
        machine.command("cont")
        places.append((address, bytes(int(byte, 16) for byte in re.findall(r" 0x([0-9a-f]{2})\b", dump))))
        time.sleep(0.02)
    return places


def split(places):
    """The addresses of samples in the image's own code, and of all others."""
    image = IMAGE.read_bytes()
    assert all(len(code) == CODE_BYTES for _, code in places)
    own = [address for address, code in places if code in image]
    return own, [address for address, code in places if code not in image]


def loader_code(machine):
    """The regions of loader code that the memory map shows, as (first, last)."""
    machine.type_line("CLS:KORVANE MEMMAP")
    pager = "-- press any key; ESC aborts --"
    screen = machine.wait_for(lambda screen: pager in screen.rows(), 60, "the first page of the map")
    machine.press("esc")
    rows = [re.match(r"([0-9A-F]{16})-([0-9A-F]{16})  LoaderCode", row) for row in screen.rows()]
    return [(int(row[1], 16), int(row[2], 16)) for row in rows if row]


def test_hot_loop_runs_code_that_was_made_for_it(tmp_path):
    with boot(make_disk(tmp_path, files={"LOOP.BAS": LOOP})) as machine:
        machine.type_line('LOAD "LOOP')
        machine.type_line("RUN")
        machine.wait_for_row("begins")
        time.sleep(2)
        _, others = split(sample(machine))
        machine.press("esc")
        machine.wait_for_row("Break in 20")
        regions = loader_code(machine)
        made = [address for address in others for first, last in regions if first <= address <= last]
        assert len(made) >= SAMPLES // 4, (others, regions)
        # All of it lies in the one mebibyte that was taken.
        assert max(made) - min(made) < 1 << 20
        machine.type_line("CLS:PRINT S=I*(I-1)/2")
        machine.wait_for_row("-1")
        # What draws characters is no such code, and is recognised.
        machine.type_line("NEW")
        machine.type_line("10 PRINT 1;:GOTO 10")
        machine.type_line("RUN")
        time.sleep(1)
        own, _ = split(sample(machine))
        assert len(own) >= SAMPLES // 4


def test_signed_standalone_image_runs_code_that_it_makes(signed_loop, tmp_path):
    disk = make_disk(tmp_path, signed_loop)
    with Machine(disk.path, code=CODE, variables=VARIABLES, arguments=SMM) as machine:
        machine.wait_for_row("begins", BOOT_TIMEOUT)
        time.sleep(2)
        _, others = split(sample(machine))
        # Without a prompt nobody tells the memory map; most of the time goes into one mebibyte.
        most = max(sum(0 <= other - address < 1 << 20 for other in others) for address in others)
        assert most >= SAMPLES // 4, others
