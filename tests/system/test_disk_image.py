"""The disk image that './dev image' makes boots as a disk and as a USB stick, with the examples on it."""

import os
import subprocess

import pytest
from conftest import BOOT_TIMEOUT, ROOT
from disk_image import PARTITION_START, DiskImage
from qemu_machine import Machine


OUTPUT = ROOT / "build" / "korvane.img"
ORDINARY_PATH = "/usr/local/bin:/usr/bin:/bin"  # of a user who is no administrator


def dev_image(*files, folder=ROOT):
    subprocess.run([ROOT / "dev", "image", *files], cwd=folder, check=True, capture_output=True,
                   env=os.environ | {"PATH": ORDINARY_PATH})  # fmt: skip


@pytest.fixture(scope="module")
def disk_image():
    dev_image()
    return OUTPUT


def test_partition_table_is_sound(disk_image):
    report = subprocess.run(["sgdisk", "--verify", disk_image], check=True, capture_output=True).stdout.decode()
    assert "No problems found" in report
    listing = subprocess.run(["sgdisk", "--print", disk_image], check=True, capture_output=True).stdout.decode()
    assert "EF00" in listing


def test_file_system_is_fat32_and_sound(disk_image):
    DiskImage(disk_image).check()
    with open(disk_image, "rb") as file:
        file.seek(PARTITION_START)
        assert file.read(90)[82:90] == b"FAT32   "


def test_files_of_a_person_are_on_the_disk(tmp_path):
    (tmp_path / "mine.bas").write_bytes(b'10 PRINT "MINE"\r\n')
    (tmp_path / "sieve.bas").write_bytes(b"10 REM another sieve\r\n")
    try:
        dev_image("mine.bas", "./sieve.bas", folder=tmp_path)
        disk = DiskImage(OUTPUT)
        assert disk.get_bytes("MINE.BAS") == b'10 PRINT "MINE"\r\n'
        assert disk.get_bytes("SIEVE.BAS") == b"10 REM another sieve\r\n"
        assert disk.get_bytes("MAZE.BAS") == (ROOT / "examples" / "maze.bas").read_bytes()
        disk.check()
    finally:
        dev_image()


def test_failed_image_leaves_the_former_one(disk_image, tmp_path):
    before = disk_image.stat().st_mtime_ns
    (tmp_path / "a.bas").write_bytes(b"")
    (tmp_path / "A.BAS").write_bytes(b"")
    with pytest.raises(subprocess.CalledProcessError):
        dev_image("a.bas", "A.BAS", folder=tmp_path)
    assert disk_image.stat().st_mtime_ns == before
    assert not disk_image.with_name("korvane.img.new").exists()


# The image itself must stay as it was made, so machines write to a snapshot.
AS_DISK = ["-snapshot"]
AS_STICK = ["-snapshot", "-device", "qemu-xhci", "-drive", "if=none,id=stick,format=raw,file={}"] + [
    "-device", "usb-storage,drive=stick"
]  # fmt: skip


@pytest.mark.parametrize("medium", ["disk", "stick"])
def test_image_boots(disk_image, medium):
    disk = disk_image if medium == "disk" else None
    arguments = AS_DISK if disk else [argument.format(disk_image) for argument in AS_STICK]
    with Machine(disk, arguments=arguments) as machine:
        machine.wait_for(lambda screen: "Ready." in screen.rows(), BOOT_TIMEOUT, "the prompt")
        machine.type_line("FILES")
        machine.wait_for(lambda screen: "EFI" in screen.text(), what="the listing")
        names = machine.screen().text().upper()
        for example in (ROOT / "examples").glob("*.bas"):
            assert example.name.upper() in names
