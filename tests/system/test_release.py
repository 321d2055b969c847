"""What './dev release' makes: the image of a CD boots as one and as a stick, the package's programs run, all of it is
the same when it is made again."""

import gzip
import hashlib
import json
import os
import re
import subprocess
import sys

import pytest
from conftest import BOOT_TIMEOUT, IMAGE, ROOT
from disk_image import PARTITION_START, DiskImage
from qemu_machine import Machine

import release

TERMINAL = ROOT / "build" / "host" / "host" / "korvane-terminal"
VERSION = (ROOT / "VERSION").read_text(encoding="ascii").strip()
EXAMPLES = sorted(path.name for path in (ROOT / "examples").glob("*.bas"))


def make(output, **environment):
    """A release of the tree as it is."""
    command = [sys.executable, ROOT / "tools" / "release.py", "--trial", "--output", output, IMAGE, TERMINAL]
    subprocess.run(command, check=True, env=os.environ | environment)
    return output


@pytest.fixture(scope="module")
def dist(tmp_path_factory):
    return make(tmp_path_factory.mktemp("release") / "dist")


@pytest.fixture(scope="module")
def installed(dist, tmp_path_factory):
    """The files of the package, unpacked into a folder of their own."""
    folder = tmp_path_factory.mktemp("system")
    subprocess.run(["dpkg-deb", "-x", dist / f"korvane_{VERSION}_amd64.deb", folder], check=True)
    return folder


def test_sums_cover_every_file(dist):
    sums = dict(line.split("  ")[::-1] for line in (dist / "SHA256SUMS").read_text(encoding="ascii").splitlines())
    files = {file.name: hashlib.sha256(file.read_bytes()).hexdigest() for file in dist.iterdir()}
    del files["SHA256SUMS"]
    assert sums == files


def test_second_time_elsewhere_gives_the_same_bytes(dist, tmp_path):
    # As in a new checkout, all files are younger.
    for file in ("LICENSE", "examples/maze.bas", "docs/index.md"):
        os.utime(ROOT / file)
    again = make(tmp_path / "a folder with another name", TZ="Asia/Kolkata", LC_ALL="C", HOME=str(tmp_path))
    assert (again / "SHA256SUMS").read_text(encoding="ascii") == (dist / "SHA256SUMS").read_text(encoding="ascii")


def test_licences_lie_beside_the_image(dist, tmp_path):
    font_licence = (ROOT / "LICENSE.font.txt").read_bytes()
    assert (dist / "LICENSE.font.txt").read_bytes() == font_licence
    image = tmp_path / "disk.img"
    image.write_bytes(gzip.decompress((dist / f"korvane-{VERSION}.img.gz").read_bytes()))
    disk = DiskImage(image, PARTITION_START)
    assert disk.get_bytes("EFI/BOOT/FONT.TXT") == font_licence
    assert disk.get_bytes("EFI/BOOT/LICENSE.TXT") == (ROOT / "LICENSE").read_bytes()
    assert disk.get_bytes("EFI/BOOT/BOOTX64.EFI") == IMAGE.read_bytes()
    disk.check()


def test_sources_are_complete(dist):
    archive = dist / f"korvane-{VERSION}.tar.gz"
    names = subprocess.run(["tar", "-tzf", archive], check=True, capture_output=True).stdout.decode().splitlines()
    committed = release.git_lines("ls-tree", "-r", "--name-only", "HEAD")
    files = sorted(name for name in names if not name.endswith("/"))
    assert files == sorted(f"korvane-{VERSION}/{name}" for name in committed)


# ---- The image of a CD ------------------------------------------------------------------------------------------

AS_STICK = ["-snapshot", "-device", "qemu-xhci", "-drive", "if=none,id=stick,format=raw,file={}"] + [
    "-device", "usb-storage,drive=stick"
]  # fmt: skip


@pytest.mark.parametrize("medium", ["cd", "stick"])
def test_iso_boots(dist, medium):
    iso = dist / f"korvane-{VERSION}.iso"
    arguments = ["-cdrom", str(iso)] if medium == "cd" else [argument.format(iso) for argument in AS_STICK]
    with Machine(None, arguments=arguments) as machine:
        machine.wait_for(lambda screen: "Ready." in screen.rows(), BOOT_TIMEOUT, "the prompt")
        machine.type_line("FILES")
        machine.wait_for(lambda screen: "SPRITE.BAS" in screen.text().upper(), what="the listing")
        # A stick can be written to, a CD cannot.
        machine.type_line('10 PRINT "KE";"PT"')
        machine.type_line('SAVE "MINE.BAS"')
        machine.type_line("NEW")
        machine.type_line('LOAD "MINE"')
        machine.type_line("RUN")
        if medium == "stick":
            machine.wait_for_row("KEPT")
        else:
            machine.wait_for_row("Bad file name")


def test_iso_tells_its_partition_in_both_tables(dist):
    iso = dist / f"korvane-{VERSION}.iso"
    report = subprocess.run(["sgdisk", "--verify", "--print", iso], check=True, capture_output=True).stdout.decode()
    assert "No problems found" in report
    assert "EF00" in report
    boot = subprocess.run(["xorriso", "-indev", iso, "-report_el_torito", "plain"], check=True, capture_output=True)
    assert re.search(r"El Torito boot img : +1 +UEFI +y +none", boot.stdout.decode())


# ---- The package ------------------------------------------------------------------------------------------------


def korvane(installed, *arguments, lines="", home):
    command = [installed / "usr" / "bin" / "korvane", *arguments]
    environment = {name: value for name, value in os.environ.items() if name != "HOME"}
    if home:
        environment["HOME"] = str(home)
    return subprocess.run(command, input=lines.encode(), capture_output=True, env=environment, check=False)


def test_package_has_no_faults(dist):
    command = ["lintian", "--no-cfg", "--fail-on", "error,warning", dist / f"korvane_{VERSION}_amd64.deb"]
    result = subprocess.run(command, capture_output=True, check=False)
    assert result.returncode == 0, result.stdout.decode()


def test_installed_program_keeps_its_files_at_home(installed, tmp_path):
    first = korvane(installed, lines='10 PRINT "MI";"NE"\nSAVE "MINE.BAS"\n', home=tmp_path)
    assert first.returncode == 0, first.stderr.decode()
    volume = tmp_path / "korvane-files"
    assert sorted(path.name for path in volume.iterdir()) == sorted([*EXAMPLES, "MINE.BAS"])
    second = korvane(installed, lines='LOAD "MINE"\nRUN\n', home=tmp_path)
    assert b"\nMINE\n" in second.stdout


def test_volume_at_home_is_made_once_and_can_be_written_to(installed, tmp_path):
    korvane(installed, home=tmp_path)
    example = tmp_path / "korvane-files" / "maze.bas"
    assert os.stat(example).st_mode & 0o200
    example.unlink()
    korvane(installed, home=tmp_path)
    assert not example.exists()


def test_program_of_another_folder_leaves_home_alone(installed, tmp_path):
    (tmp_path / "here.bas").write_text('10 PRINT "HE";"RE"\n', encoding="ascii")
    result = korvane(installed, tmp_path / "here.bas", home=tmp_path)
    assert b"\nHERE\n" in result.stdout
    assert not (tmp_path / "korvane-files").exists()


def test_without_a_home_there_is_a_line_about_it(installed):
    result = korvane(installed, home=None)
    assert result.returncode == 1
    assert b"--volume" in result.stderr


def test_installed_program_says_its_own_name(installed, tmp_path):
    told = korvane(installed, "--help", home=tmp_path).stdout.decode()
    assert told.startswith("usage: korvane [") and "korvane-terminal" not in told and "@" not in told
    for arguments in (["--nonsense"], ["none.bas"], ["--script"], ["--size", "1x1"]):
        assert korvane(installed, *arguments, home=tmp_path).stderr.startswith(b"korvane: ")


def test_banner_agrees_with_the_version(installed, tmp_path):
    shown = korvane(installed, home=tmp_path).stdout.decode().splitlines()
    assert f"Korvane BASIC v{'.'.join(VERSION.split('.')[:2])}" in shown


def test_version_has_one_place(installed, dist):
    expected = f"Korvane BASIC {VERSION}\n"
    assert korvane(installed, "--version", home=None).stdout.decode() == expected
    shown = subprocess.run([ROOT / "dev", "run", "--version"], check=True, capture_output=True).stdout.decode()
    assert shown == expected
    assert (dist / "RELEASE-NOTES.md").read_text(encoding="utf-8").startswith(f"# Korvane BASIC {VERSION}\n")
    page = subprocess.run(["man", "--local-file", installed / "usr/share/man/man1/korvane.1.gz"], check=True,
                          capture_output=True, env=os.environ | {"MANPAGER": "cat"}).stdout.decode()  # fmt: skip
    assert f"Korvane BASIC {VERSION}" in page
    for option in ("--volume", "--size", "--script", "--image", "--present", "--help", "--version"):
        assert option in page
    extension = json.loads((ROOT / "editors" / "vscode" / "package.json").read_text(encoding="utf-8"))
    assert extension["version"] == VERSION


def test_installed_converter_knows_the_same_words(installed, tmp_path):
    listing = ROOT / "tests" / "converter" / "squash.bas"
    own = subprocess.run([ROOT / "tools" / "convert_listing.py", listing], check=True, capture_output=True)
    # Where it is installed nothing but Python can be counted on, not even the folder it is called from.
    convert = installed / "usr" / "bin" / "korvane-convert"
    environment = {"PATH": "/usr/bin:/bin", "PYTHONDONTWRITEBYTECODE": "1"}
    done = subprocess.run([convert, listing, "-o", "new.bas"], check=True, capture_output=True, cwd=tmp_path, env=environment)
    assert (tmp_path / "new.bas").read_bytes() == own.stdout
    assert done.stderr == own.stderr and b"separated" in own.stderr
    result = korvane(installed, tmp_path / "new.bas", home=tmp_path)
    for line in listing.with_suffix(".out").read_text(encoding="ascii").splitlines():
        assert line.strip() in result.stdout.decode()
    named = subprocess.run([convert, "none.bas"], check=False, capture_output=True, cwd=tmp_path, env=environment)
    assert named.returncode == 2 and named.stderr.startswith(b"korvane-convert: ") and b"none.bas" in named.stderr


def test_converter_has_a_man_page(installed):
    page = subprocess.run(["man", "--local-file", installed / "usr/share/man/man1/korvane-convert.1.gz"], check=True,
                          capture_output=True, env=os.environ | {"MANPAGER": "cat"}).stdout.decode()  # fmt: skip
    usage = subprocess.run([installed / "usr/bin/korvane-convert", "--help"], check=True, capture_output=True)
    options = set(re.findall(r"--[a-z]+", usage.stdout.decode()))
    assert {"--output", "--single", "--keep", "--help"} == options
    assert all(option in page for option in options)


# ---- Version and tag --------------------------------------------------------------------------------------------


@pytest.mark.parametrize("here, everywhere", [([], []), (["v1.2.3"], ["v1.2.3"]), ([], ["v1.2.2"])])
def test_tag_that_agrees(here, everywhere):
    release.check_tags("1.2.3", here, everywhere)


@pytest.mark.parametrize("here, everywhere", [(["v1.2.4"], ["v1.2.4"]), (["v1.2.3", "v1.3.0"], []), ([], ["v1.2.3"])])
def test_tag_that_does_not_agree(here, everywhere):
    with pytest.raises(release.ReleaseError):
        release.check_tags("1.2.3", here, everywhere)


def test_notes_of_a_version():
    changes = "# Changes\n\n## 1.10.0\n\n- ten\n\n## 1.1.0 (old)\n\n- one\n- two\n"
    assert release.version_notes("1.1.0", changes) == "- one\n- two\n"
    assert release.version_notes("1.10.0", changes) == "- ten\n"
    with pytest.raises(release.ReleaseError, match="1.0.0"):
        release.version_notes("1.0.0", changes)


def test_every_file_has_a_licence():
    result = subprocess.run(["reuse", "--root", ROOT, "lint"], capture_output=True, check=False)
    assert result.returncode == 0, result.stdout.decode()
