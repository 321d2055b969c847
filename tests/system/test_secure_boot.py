"""Standalone images under Secure Boot: the signed one boots into its program, a changed one is refused.

Signed with the test key whose certificate Debian's firmware variables file has enrolled.
"""

import subprocess

import pytest
from conftest import IMAGE, ROOT, make_disk
from qemu_machine import Machine

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"
KEY = "/usr/share/ovmf/PkKek-1-snakeoil.key"
CERTIFICATE = "/usr/share/ovmf/PkKek-1-snakeoil.pem"
CODE = "/usr/share/OVMF/OVMF_CODE_4M.secboot.fd"
VARIABLES = "/usr/share/OVMF/OVMF_VARS_4M.snakeoil.fd"
# This firmware keeps its variables in system management mode.
SMM = ["-machine", "q35,smm=on", "-global", "driver=cfi.pflash01,property=secure,value=on"]

LINES = '10 PRINT "signed program"\n20 GOTO 20\nCREATEEFI "GAME"\n'


@pytest.fixture(scope="module")
def signed_image(tmp_path_factory):
    """A standalone image, made by the interpreter on the hosted firmware and signed with Debian's tools."""
    folder = tmp_path_factory.mktemp("signing")
    subprocess.run(
        [TERMINAL, "--image", IMAGE, "--volume", folder], input=LINES.encode(), check=True, stdout=subprocess.DEVNULL
    )
    return sign(folder)


def sign(folder):
    """The folder's GAME.efi, signed."""
    key = folder / "key.pem"
    subprocess.run(["openssl", "rsa", "-in", KEY, "-passin", "pass:snakeoil", "-out", key], check=True)
    output = folder / "signed.efi"
    subprocess.run(
        ["sbsign", "--key", key, "--cert", CERTIFICATE, "--output", output, folder / "GAME.efi"], check=True
    )
    return output


def start(folder, image):
    """A machine with Secure Boot that boots from the image, and the file that its serial line is written to."""
    log = folder / "serial.log"
    serial = ["-chardev", f"file,id=log,path={log}", "-device", "isa-serial,chardev=log"]
    return Machine(make_disk(folder, image).path, code=CODE, variables=VARIABLES, arguments=SMM + serial), log


def test_signed_image_boots_into_its_program(signed_image, tmp_path):
    machine, _ = start(tmp_path, signed_image)
    with machine:
        machine.wait_for_row("signed program", 90)


def test_program_changed_after_signing_is_refused(signed_image, tmp_path):
    data = signed_image.read_bytes()
    changed = tmp_path / "changed.efi"
    changed.write_bytes(data.replace(b"signed program", b"forged program"))
    assert changed.read_bytes() != data
    machine, log = start(tmp_path, changed)
    with machine:
        screen = machine.wait_for(
            lambda _: b"No bootable option" in log.read_bytes(), 90, "the refusal"
        )
        assert b"Access Denied" in log.read_bytes()
        assert "forged program" not in screen.rows()
