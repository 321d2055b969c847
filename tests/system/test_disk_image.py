"""The disk image that './dev image' makes boots as a disk and as a USB stick, with the examples on it."""

import subprocess

import pytest
from conftest import BOOT_TIMEOUT, ROOT
from disk_image import PARTITION_START, DiskImage
from qemu_machine import Machine


@pytest.fixture(scope="module")
def disk_image():
    subprocess.run([ROOT / "dev", "image"], check=True, capture_output=True)
    return ROOT / "build" / "korvane.img"


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
