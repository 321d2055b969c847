"""What the system tests share: the built image, fresh boot disks, and machines booted to the prompt."""

import os
import pathlib
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

import programs  # noqa: E402
from disk_image import DiskImage  # noqa: E402
from qemu_machine import Machine  # noqa: E402
from woken_machine import wake  # noqa: E402

IMAGE = ROOT / "build" / "korvane.efi"
BOOT_TIMEOUT = 90

# The tests run programs that an ordinary user's PATH does not lead to.
os.environ["PATH"] = programs.search_path()


def make_disk(folder, image=IMAGE, files=None, folders=()):
    """A boot disk with an image (a path), files ({name: bytes}) and folders."""
    disk = DiskImage(folder / "boot.img").create().install(image)
    for name in folders:
        disk.make_folder(name)
    for name, data in (files or {}).items():
        disk.put_bytes(data, name)
    return disk


def boot(disk, **options):
    """A machine booted from a disk (None: from what the options give it) to the prompt; close it (or use it in a with statement)."""
    machine = wake(disk) if disk and not options else Machine(disk and disk.path, **options)
    try:
        machine.wait_for(lambda screen: "Ready." in screen.rows(), BOOT_TIMEOUT, "the prompt")
    except BaseException:
        machine.close()
        raise
    return machine


@pytest.fixture(scope="module")
def machine(tmp_path_factory):
    """One machine for all tests of a file; each test begins with a cleared screen and no program."""
    with boot(make_disk(tmp_path_factory.mktemp("disk"))) as machine:
        yield machine


@pytest.fixture
def prompt(machine):
    """The shared machine, cleared to an empty program and an empty screen with the cursor waiting."""
    machine.press("esc")
    machine.type_line("NEW")
    machine.type_line("COLOR 15,0:SCREEN 1280,800")
    machine.wait_for(lambda screen: screen.rows()[:2] == ["Ready.", "█"], 30, "a clear screen")
    return machine
