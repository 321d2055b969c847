"""Boots an image on real firmware in QEMU, and waits for a row on its screen.

usage: boot_image.py IMAGE.EFI ROW
"""

import os
import pathlib
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

import programs  # noqa: E402
from disk_image import DiskImage  # noqa: E402
from qemu_machine import Machine  # noqa: E402

BOOT_TIMEOUT = 180


def main(image, row):
    with tempfile.TemporaryDirectory() as folder:
        disk = DiskImage(pathlib.Path(folder) / "boot.img").create().install(pathlib.Path(image))
        with Machine(disk.path) as machine:
            machine.wait_for(lambda screen: row in screen.rows(), BOOT_TIMEOUT, row)


if __name__ == "__main__":
    os.environ["PATH"] = programs.search_path()
    main(*sys.argv[1:])
