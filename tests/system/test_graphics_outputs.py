"""Graphics outputs that the interpreter cannot draw on are told about; one that it can is found beside them."""

import time

from conftest import BOOT_TIMEOUT, boot, make_disk
from qemu_machine import Machine


def test_without_a_framebuffer_the_firmware_console_says_so(tmp_path):
    # The firmware's text console is on the serial port as well, where it can be read whatever its font is.
    log = tmp_path / "serial.txt"
    arguments = ["-vga", "none", "-device", "virtio-gpu-pci"] + [
        "-chardev", f"file,id=log,path={log}", "-device", "isa-serial,chardev=log"
    ]  # fmt: skip
    deadline = time.monotonic() + 2 * BOOT_TIMEOUT
    with Machine(make_disk(tmp_path).path, arguments=arguments):
        while b"GOP not found!" not in (log.read_bytes() if log.exists() else b""):
            assert time.monotonic() < deadline
            time.sleep(0.5)


def test_the_output_with_a_framebuffer_is_found_beside_one_without(tmp_path):
    with boot(make_disk(tmp_path), arguments=["-device", "virtio-gpu-pci"]) as machine:
        machine.type_line("PRINT 6*7")
        machine.wait_for_row(" 42")
