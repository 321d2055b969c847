"""Makes the Debian package: the terminal, the image, the examples, the manual."""

import gzip
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import textwrap
import time

import listing_language
from disk_image import run

ROOT = pathlib.Path(__file__).resolve().parents[1]
PACKAGING = ROOT / "packaging"
CHANGELOG_WIDTH = 79


class Folder:
    """The files of the package as they will lie on a system."""

    def __init__(self, path):
        self.path = pathlib.Path(path)

    def add(self, source, name, mode=0o644):
        target = self.path / name
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(source, target)
        target.chmod(mode)
        return target

    def write(self, data, name):
        target = self.path / name
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(data)
        target.chmod(0o644)

    def link(self, target, name):
        link = self.path / name
        link.parent.mkdir(parents=True, exist_ok=True)
        link.symlink_to(target)

    def write_compressed(self, text, name):
        self.write(gzip.compress(text.encode(), 9, mtime=0), name)

    def files(self):
        return sorted(path for path in self.path.rglob("*") if path.is_file() and not path.is_symlink())

    def settle(self, epoch):
        """Gives everything one time and the usual rights."""
        for path in [self.path, *self.path.rglob("*")]:
            if path.is_dir():
                path.chmod(0o755)
            os.utime(path, (epoch, epoch), follow_symlinks=False)


def filled(name, values):
    text = (PACKAGING / name).read_text(encoding="utf-8")
    for key, value in values.items():
        text = text.replace(f"@{key}@", value)
    return text


def indented(text):
    """A text as a paragraph of a control file."""
    return "".join(f" {line}\n" if line.strip() else " .\n" for line in text.splitlines())


def copyright_text():
    licence = (ROOT / "LICENSE").read_text(encoding="utf-8").split("\n\n", 2)[2]
    font_licence = (ROOT / "LICENSE.font.txt").read_text(encoding="utf-8")
    return (
        "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
        "Upstream-Name: Korvane BASIC\n\n"
        "Files: *\nCopyright: 2026 Korvane BASIC contributors\nLicense: Expat\n" + indented(licence) + "\n"
        "Files: usr/share/korvane/korvane.efi\n"
        "Copyright: 2026 Korvane BASIC contributors\n 2010-2014 Dimitar Toshkov Zhekov\n"
        "License: Expat and OFL-1.1\n"
        "Comment: The console font in it is Terminus Font, under the SIL Open Font License.\n\n"
        "License: OFL-1.1\n" + indented(font_licence)
    )  # fmt: skip


def changelog(version, notes, maintainer, epoch):
    """The notes of a version as an entry of a Debian changelog."""
    points = re.split(r"^- ", notes, flags=re.MULTILINE)
    entries = "\n".join(
        textwrap.fill(" ".join(point.split()), CHANGELOG_WIDTH, initial_indent="  * ", subsequent_indent="    ")
        for point in points if point.strip()
    )  # fmt: skip
    date = time.strftime("%a, %d %b %Y %H:%M:%S +0000", time.gmtime(epoch))
    return f"korvane ({version}) unstable; urgency=medium\n\n{entries}\n\n -- {maintainer}  {date}\n"


def library_packages(program):
    """The packages with the libraries that a program is linked with, as a Depends field names them."""
    with tempfile.TemporaryDirectory(prefix="korvane-package-") as folder:
        control = pathlib.Path(folder, "debian", "control")
        control.parent.mkdir()
        control.write_text("Source: korvane\n\nPackage: korvane\nArchitecture: amd64\n", encoding="ascii")
        result = run("dpkg-shlibdeps", "-O", f"-e{program}", cwd=folder).decode()
    return result.strip().removeprefix("shlibs:Depends=")


def add_converter(folder):
    """The converter of listings, with the words that it finds in the interpreter's sources elsewhere."""
    place = "usr/share/korvane/converter"
    script = (ROOT / "tools/convert_listing.py").read_text(encoding="utf-8")
    folder.write(script.replace("#!/usr/bin/env python3\n", "#!/usr/bin/python3\n", 1).encode(), f"{place}/convert_listing.py")
    (folder.path / place / "convert_listing.py").chmod(0o755)
    for module in sorted((ROOT / "tools").glob("listing_*.py")):
        folder.add(module, f"{place}/{module.name}")
    folder.write(listing_language.as_file().encode(), f"{place}/{listing_language.WORDS_FILE.name}")
    folder.link("../share/korvane/converter/convert_listing.py", "usr/bin/korvane-convert")


def fill_folder(folder, image, terminal, examples, manual, values):
    program = folder.add(terminal, "usr/bin/korvane", 0o755)
    run("strip", "--strip-unneeded", "--remove-section=.comment", "--remove-section=.note", str(program))
    folder.add(image, "usr/share/korvane/korvane.efi")
    for example in examples:
        folder.add(example, f"usr/share/korvane/examples/{os.path.basename(example)}")
    add_converter(folder)
    for page in ("korvane.1", "korvane-convert.1"):
        folder.write_compressed(filled(f"man/{page}", values), f"usr/share/man/man1/{page}.gz")
    folder.add(ROOT / "packaging/completions/korvane", "usr/share/bash-completion/completions/korvane")
    for page in manual:
        folder.add(ROOT / page, pathlib.Path("usr/share/doc/korvane/manual", *pathlib.Path(page).parts[1:]))
    folder.write(copyright_text().encode(), "usr/share/doc/korvane/copyright")
    return program


def make_package(output, image, terminal, examples, manual, version, notes, epoch):
    """Makes the package file `output`. The same files and the same time give the same bytes."""
    values = {"VERSION": version, "DATE": time.strftime("%Y-%m-%d", time.gmtime(epoch))}
    maintainer = next(line for line in filled("control", {}).splitlines() if line.startswith("Maintainer: "))
    with tempfile.TemporaryDirectory(prefix="korvane-package-") as path:
        folder = Folder(path)
        program = fill_folder(folder, image, terminal, examples, manual, values)
        entry = changelog(version, notes, maintainer.removeprefix("Maintainer: "), epoch)
        folder.write_compressed(entry, "usr/share/doc/korvane/changelog.gz")
        installed = folder.files()
        values["DEPENDS"] = library_packages(program)
        # As the policy counts: each file in whole KiB, each folder as one.
        folders = sum(1 for item in folder.path.rglob("*") if item.is_dir())
        values["INSTALLED_SIZE"] = str(sum(-(-file.stat().st_size // 1024) for file in installed) + folders)
        sums = subprocess.run(["md5sum", *(file.relative_to(path) for file in installed)], cwd=path, check=True,
                              capture_output=True).stdout  # fmt: skip
        folder.write(filled("control", values).encode(), "DEBIAN/control")
        folder.write(sums, "DEBIAN/md5sums")
        folder.settle(epoch)
        # One thread: with more the compressor cuts its input into pieces.
        run("dpkg-deb", "--root-owner-group", "-Zxz", "--threads-max=1", "--build", path, str(output))
