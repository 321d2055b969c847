"""Finds the programs and files of other packages that the tools use, and tells which Debian package is missing."""

import os
import shutil

# Where programs for administrators lie; an ordinary user's PATH does not lead there.
ADMINISTRATOR_FOLDERS = ["/usr/local/sbin", "/usr/sbin", "/sbin"]

PACKAGES = {
    "dpkg-deb": "dpkg",
    "dpkg-shlibdeps": "dpkg-dev",
    "fsck.fat": "dosfstools",
    "mcopy": "mtools",
    "mdir": "mtools",
    "mformat": "mtools",
    "mmd": "mtools",
    "qemu-system-x86_64": "qemu-system-x86",
    "sfdisk": "fdisk",
    "sgdisk": "gdisk",
    "strip": "binutils",
    "xorriso": "xorriso",
}


class MissingProgram(OSError):
    """A program or file that a package would bring."""


def search_path():
    return os.pathsep.join([os.environ.get("PATH", os.defpath), *ADMINISTRATOR_FOLDERS])


def find(name):
    """The path of a program."""
    path = shutil.which(name, path=search_path())
    if path is None:
        raise MissingProgram(f"{name} is not installed: apt-get install {PACKAGES.get(name, name)}")
    return path


def require_file(path, package):
    """The path of a file that a package installs."""
    if not os.path.exists(path):
        raise MissingProgram(f"there is no {path}: apt-get install {package}")
    return path
