#!/usr/bin/env python3
"""Makes bootable disk images: GPT, one EFI system partition with FAT32, the interpreter as its boot loader.

usage: disk_image.py OUTPUT.img KORVANE.EFI [--example FILE]... [FILE...]

The interpreter becomes \\EFI\\BOOT\\BOOTX64.EFI, which firmware starts from a disk or a stick by itself; the other
files go into the root directory, their names in capitals. A file takes the place of an example of the same name. The
licences of the interpreter and of its font are put beside it.
Uses sgdisk and mtools; needs no root rights and mounts nothing.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import uuid

import program_text
import programs

BOOT_FOLDER = "EFI/BOOT"
BOOT_FILE = "EFI/BOOT/BOOTX64.EFI"
ROOT = pathlib.Path(__file__).resolve().parents[1]
LICENCES = {"LICENSE.TXT": ROOT / "LICENSE", "FONT.TXT": ROOT / "LICENSE.font.txt"}
IMAGE_MIB = 64
PARTITION_START = 1024 * 1024  # the usual alignment, and where mtools finds the file system
SECTOR = 512
ILLEGAL_CHARACTERS = re.compile(r'[\x00-\x1f"*:<>?\\|]')  # of FAT
BACKUP_GPT_SECTORS = 33


class DiskImageError(Exception):
    pass


def run(*command, **options):
    try:
        path = programs.find(command[0])
        return subprocess.run([path, *command[1:]], check=True, capture_output=True, **options).stdout
    except programs.MissingProgram as error:
        raise DiskImageError(str(error)) from error
    except subprocess.CalledProcessError as error:
        message = (error.stderr or error.stdout).decode(errors="replace").strip()
        raise DiskImageError(f"{' '.join(command)}: {message}") from error


def root_files(files, examples=()):
    """{name on the disk: path} of files, which must differ in their names there, and of the examples beside them."""
    placed = {}
    for file in files:
        name = os.path.basename(file).upper()
        if not os.path.isfile(file):
            raise DiskImageError(f"{file} is a folder" if os.path.isdir(file) else f"there is no file {file}")
        illegal = ILLEGAL_CHARACTERS.search(name)
        if illegal:
            raise DiskImageError(f"{file}: a name on the disk cannot have the character {illegal[0]!r}")
        if name in placed:
            raise DiskImageError(f"{placed[name]} and {file} would both be {name} on the disk")
        placed[name] = file
    return {os.path.basename(example).upper(): example for example in examples} | placed


class DiskImage:
    """A disk image file whose first partition is a FAT file system; names inside it use forward slashes."""

    def __init__(self, path, start=PARTITION_START):
        self.path = str(path)
        self.drive = f"{self.path}@@{start}"

    def create(self, mib=IMAGE_MIB, identity=None):
        """Makes the disk with a file system in it. Its identifiers are made from the identity, a UUID, or by chance."""
        self.make_file(mib)
        identity = identity or uuid.uuid4()
        partition = uuid.uuid5(identity, "partition")
        run("sgdisk", f"--disk-guid={identity}", "--new=1:2048:0", f"--partition-guid=1:{partition}", "--typecode=1:ef00",
            "--change-name=1:KORVANE", self.path)
        sectors = (mib * 1024 * 1024 - PARTITION_START) // SECTOR - BACKUP_GPT_SECTORS
        # One sector a cluster: FAT32 needs 65525 clusters, which a small partition has only this way.
        return self.format(identity, "-F", "-c", "1", "-T", str(sectors), "-h", "64", "-s", "32", "-H", "2048")

    def make_file(self, mib):
        with open(self.path, "wb") as file:
            file.truncate(mib * 1024 * 1024)

    def format(self, identity, *geometry):
        serial_number = f"{identity.int >> 96:08x}"
        run("mformat", "-i", self.drive, *geometry, "-N", serial_number, "-v", "KORVANE", "::")
        return self

    def make_folder(self, name):
        run("mmd", "-i", self.drive, "-D", "s", f"::/{name}")

    def put(self, local, name):
        """Copies a file of the host into the image, replacing an older one."""
        # A name such as a:b would be that of a drive.
        run("mcopy", "-i", self.drive, "-o", os.path.abspath(local), f"::/{name}")

    def put_bytes(self, data, name):
        run("mcopy", "-i", self.drive, "-o", "-", f"::/{name}", input=data)

    def get_bytes(self, name):
        return run("mcopy", "-i", self.drive, "-n", f"::/{name}", "-")

    def names(self, folder=""):
        """The names in a folder, as mtools lists them."""
        listing = run("mdir", "-i", self.drive, "-b", f"::/{folder}").decode(errors="replace")
        return [line.removeprefix("::/") for line in listing.splitlines()]

    def fill(self, sectors):
        """Leaves so many sectors free, by a file of zeros."""
        listing = run("mdir", "-i", self.drive, "::/").decode(errors="replace")
        free = re.search(r"([0-9 ]+) bytes free", listing)[1].replace(" ", "")
        self.put_bytes(b"\0" * (int(free) - sectors * SECTOR), "FILLER.BIN")

    def check(self):
        """Runs fsck.fat over a copy of the file system; raises DiskImageError when it finds fault."""
        copy = self.path + ".fsck"
        with open(self.path, "rb") as image, open(copy, "wb") as file:
            image.seek(PARTITION_START)
            shutil.copyfileobj(image, file)
        try:
            run("fsck.fat", "-n", copy)
        finally:
            os.unlink(copy)

    def install(self, image, files=None):
        """Puts the interpreter where firmware starts it, and files ({name: path}) into the root directory."""
        for folder in ("EFI", BOOT_FOLDER):
            if folder not in [name.rstrip("/") for name in self.names(os.path.dirname(folder))]:
                self.make_folder(folder)
        self.put(image, BOOT_FILE)
        for name, path in LICENCES.items():
            self.put(path, f"{BOOT_FOLDER}/{name}")
        for name, path in (files or {}).items():
            self.put_text(path, name)
        return self

    def put_text(self, local, name):
        """The same as put(), but programs become what the interpreter reads."""
        if not program_text.is_program(name):
            self.put(local, name)
            return
        with open(local, "rb") as file:
            data = file.read()
        try:
            codes = program_text.to_codes(data)
        except program_text.ProgramTextError as error:
            raise DiskImageError(f"{local}: {error}") from error
        if codes == data:
            self.put(local, name)
        else:
            self.put_bytes(codes, name)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0], allow_abbrev=False)
    parser.add_argument("output")
    parser.add_argument("image")
    parser.add_argument("files", nargs="*")
    parser.add_argument("--example", action="append", default=[])
    options = parser.parse_intermixed_args()
    unfinished = options.output + ".new"
    try:
        files = root_files(options.files, options.example)
        try:
            DiskImage(unfinished).create().install(options.image, files)
            os.replace(unfinished, options.output)
        finally:
            if os.path.exists(unfinished):
                os.unlink(unfinished)
    except (OSError, DiskImageError) as error:
        sys.exit(f"disk_image.py: {error}")


if __name__ == "__main__":
    main()
