#!/usr/bin/env python3
"""Makes what people get who do not build: everything of a release, from one commit and the programs built from it.

usage: release.py [--output FOLDER] [--trial] KORVANE.EFI KORVANE-TERMINAL

The version is in the file VERSION; a tag of the commit must agree with it. The same commit and programs give the same
bytes, wherever and whenever: all times are the commit's. --trial takes the tree as it is, with what is not committed.
"""

import argparse
import gzip
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import uuid

from debian_package import make_package
from disk_image import LICENCES, DiskImage, DiskImageError, root_files
from iso_image import make_iso

ROOT = pathlib.Path(__file__).resolve().parents[1]
NAMESPACE = uuid.UUID("5b1b4a1e-6c0e-4b0e-9d35-2f3c6f0c8a11")


class ReleaseError(Exception):
    pass


def git(*arguments):
    result = subprocess.run(["git", *arguments], cwd=ROOT, capture_output=True, check=False)
    if result.returncode != 0:
        raise ReleaseError(f"git {arguments[0]}: {result.stderr.decode(errors='replace').strip()}")
    return result.stdout


def git_lines(*arguments):
    return git(*arguments).decode().splitlines()


# ---- Version ---------------------------------------------------------------------------------------------------


def read_version():
    version = (ROOT / "VERSION").read_text(encoding="ascii").strip()
    if not re.fullmatch(r"\d+\.\d+\.\d+", version):
        raise ReleaseError(f"VERSION holds '{version}', which is not MAJOR.MINOR.PATCH")
    return version


def check_tags(version, tags_here, all_tags):
    """A version's tag is the letter v and its number; the commit may have none yet."""
    for tag in tags_here:
        if tag != f"v{version}":
            raise ReleaseError(f"the commit's tag is {tag}, but VERSION says {version}")
    if not tags_here and f"v{version}" in all_tags:
        raise ReleaseError(f"another commit is tagged v{version}: VERSION needs a new number")


def version_notes(version, changes):
    """What CHANGELOG.md tells about a version, without its heading."""
    sections = re.split(r"^## +", changes, flags=re.MULTILINE)
    for section in sections[1:]:
        heading, _, notes = section.partition("\n")
        if heading.split()[0] == version:
            return notes.strip() + "\n"
    raise ReleaseError(f"CHANGELOG.md tells nothing about {version}")


# ---- Parts -----------------------------------------------------------------------------------------------------


def compress(source, target):
    with open(source, "rb") as plain, open(target, "wb") as file:
        with gzip.GzipFile("", "wb", 9, file, mtime=0) as packed:
            shutil.copyfileobj(plain, packed)


def make_disk(folder, name, identity, image, examples):
    disk = folder / "disk.img"
    DiskImage(disk).create(identity=identity).install(image, root_files([], examples))
    compress(disk, folder / f"{name}.img.gz")
    disk.unlink()


def make_sources(folder, name):
    archive = folder / "sources.tar"
    # The rights of the files do not depend on who asks.
    archive.write_bytes(git("-c", "tar.umask=0022", "archive", "--format=tar", f"--prefix={name}/", "HEAD"))
    compress(archive, folder / f"{name}.tar.gz")
    archive.unlink()


def make_sums(folder):
    lines = [f"{hashlib.sha256(file.read_bytes()).hexdigest()}  {file.name}\n" for file in sorted(folder.iterdir())]
    (folder / "SHA256SUMS").write_text("".join(lines), encoding="ascii")


def make_release(folder, image, terminal, version, epoch):
    files = git_lines("ls-files", "--", "examples", "docs")
    examples = [str(ROOT / file) for file in files if file.startswith("examples/") and not file.endswith(".md")]
    manual = [file for file in files if file.startswith("docs/")]
    notes = version_notes(version, (ROOT / "CHANGELOG.md").read_text(encoding="utf-8"))
    name = f"korvane-{version}"
    identity = uuid.uuid5(NAMESPACE, f"{version} {epoch}")

    shutil.copyfile(image, folder / "korvane.efi")
    for licence in ("LICENSE", "LICENSE.font.txt"):
        shutil.copyfile(ROOT / licence, folder / licence)
    (folder / "RELEASE-NOTES.md").write_text(f"# Korvane BASIC {version}\n\n{notes}", encoding="utf-8")
    make_disk(folder, name, identity, image, examples)
    visible = {"/KORVANE.EFI": image} | {f"/{licence}": path for licence, path in LICENCES.items()}
    visible |= {f"/EXAMPLES/{os.path.basename(example).upper()}": example for example in examples}
    make_iso(str(folder / f"{name}.iso"), identity, epoch, image, root_files([], examples), visible)
    package = folder / f"korvane_{version}_amd64.deb"
    make_package(package, image, terminal, examples, manual, version, notes, epoch)
    make_sources(folder, name)
    for file in folder.iterdir():
        file.chmod(0o644)
    make_sums(folder)


# ---- The whole -------------------------------------------------------------------------------------------------


def prepare(trial):
    """Checks that a release can be made of this tree, and gives its version and its time."""
    changed = git_lines("status", "--porcelain")
    if changed and not trial:
        raise ReleaseError(f"a release is what is committed, and {changed[0][3:]} is not")
    version = read_version()
    check_tags(version, git_lines("tag", "--points-at", "HEAD", "--list", "v*"), git_lines("tag", "--list", "v*"))
    return version, int(os.environ.get("SOURCE_DATE_EPOCH") or git("log", "-1", "--format=%ct"))


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0], allow_abbrev=False)
    parser.add_argument("image")
    parser.add_argument("terminal")
    parser.add_argument("--output", default=str(ROOT / "dist"))
    parser.add_argument("--trial", action="store_true")
    options = parser.parse_args()
    output = pathlib.Path(options.output)
    unfinished = output.with_name(output.name + ".new")
    try:
        version, epoch = prepare(options.trial)
        # For the tools: nothing depends on the hour, the place or the person.
        os.environ |= {"SOURCE_DATE_EPOCH": str(epoch), "TZ": "UTC", "LC_ALL": "C.UTF-8"}
        os.umask(0o022)
        shutil.rmtree(unfinished, ignore_errors=True)
        unfinished.mkdir(parents=True)
        try:
            make_release(unfinished, options.image, options.terminal, version, epoch)
            shutil.rmtree(output, ignore_errors=True)
            unfinished.rename(output)
        finally:
            shutil.rmtree(unfinished, ignore_errors=True)
    except (OSError, DiskImageError, ReleaseError, subprocess.SubprocessError) as error:
        sys.exit(f"release.py: {error}")


if __name__ == "__main__":
    main()
