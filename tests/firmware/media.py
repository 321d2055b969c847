"""The media that virtual PCs boot from."""

import time
import uuid

from disk_image import DiskImage, run
from iso_image import make_iso

KEY = "/usr/share/ovmf/PkKek-1-snakeoil.key"
CERTIFICATE = "/usr/share/ovmf/PkKek-1-snakeoil.pem"

BIG_SECTOR = 4096
BIG_START = 256 * BIG_SECTOR  # of the partition


def sign(folder, image):
    """The image, signed with the key whose certificate the firmware's variables have."""
    key, signed = folder / "key.pem", folder / "signed.efi"
    run("openssl", "rsa", "-in", KEY, "-passin", "pass:snakeoil", "-out", str(key))
    run("sbsign", "--key", str(key), "--cert", CERTIFICATE, "--output", str(signed), str(image))
    return signed


def make_big_sectors(path, image):
    """A file system on a medium whose sectors have 4096 bytes, without a partition table."""
    disk = DiskImage(path, start=0)
    disk.make_file(300)
    run("mkfs.fat", "-F", "32", "-S", str(BIG_SECTOR), "-s", "1", "-n", "KORVANE", str(path))
    return disk.install(image)


def make_medium(folder, kind, image, options=None):
    """A file of the kind that machines.py names, as (its path, its DiskImage where files can be looked at)."""
    if kind == "cd":
        path = folder / "boot.iso"
        make_iso(str(path), uuid.uuid4(), int(time.time()), image, {}, {"korvane.efi": image})
        return path, None
    path = folder / "boot.img"
    if kind == "big sectors":
        return path, make_big_sectors(path, image)
    disk = DiskImage(path).create()
    if kind == "shell":
        # Nothing that boots by itself: the firmware comes to its shell, which looks for this script.
        disk.put(image, "KORVANE.EFI")
        disk.put_bytes(f"fs0:\r\nkorvane.efi {options}\r\n".encode(), "startup.nsh")
        return path, disk
    return path, disk.install(image)


def check_file_system(disk):
    """Raises DiskImageError when fsck.fat finds fault."""
    if disk.drive.endswith("@@0"):
        run("fsck.fat", "-n", disk.path)
    else:
        disk.check()
