"""The script `dev` as a person uses it: options in any order, files from any folder, one clear line for a mistake."""

import os
import subprocess

import programs
import pytest
import qemu
from conftest import IMAGE, ROOT, make_disk
from disk_image import DiskImage, DiskImageError, root_files
from png import read_png

DEV = ROOT / "dev"


def dev(*arguments, folder=ROOT, lines=""):
    """What `./dev` does when called from a folder; packages stay as they are."""
    return subprocess.run(
        [DEV, *map(str, arguments)], cwd=folder, input=lines.encode(), capture_output=True, check=False, timeout=120,
        env=os.environ | {"KORVANE_SKIP_PACKAGES": "1"},
    )  # fmt: skip


def refusal(*arguments, **options):
    """The status and the last line on standard error of a call that must fail."""
    result = dev(*arguments, **options)
    assert result.returncode != 0
    assert not result.stdout
    return result.returncode, result.stderr.decode().splitlines()[-1]


def rows(*arguments, **options):
    result = dev(*arguments, **options)
    assert result.returncode == 0, result.stderr.decode()
    return result.stdout.decode().splitlines()


# ---- What is built ----------------------------------------------------------------------------------------------


def inputs_of(target):
    command = ["ninja", "-C", ROOT / "build" / "host", "-t", "inputs", target]
    listing = subprocess.run(command, check=True, capture_output=True).stdout.decode()
    return [line for line in listing.splitlines() if line.endswith(".o")]


@pytest.mark.parametrize("target", ["korvane-terminal", "measurements"])
def test_running_and_measuring_need_neither_tests_nor_the_interpreter_a_second_time(target):
    objects = inputs_of(target)
    assert any("hosted_firmware" in name for name in objects)
    assert not [name for name in objects if name.startswith("tests/") or "interpreter" in name]


def test_host_tree_without_tests_needs_no_test_packages(tmp_path):
    command = ["cmake", "--preset", "host", "-B", tmp_path, "-D", "CMAKE_DISABLE_FIND_PACKAGE_GTest=ON"]
    options = ["-D", "MPFR_LIBRARY=MPFR_LIBRARY-NOTFOUND", "-D", "KORVANE_TESTS=OFF"]
    subprocess.run([*command, *options], cwd=ROOT, check=True, capture_output=True)
    build = subprocess.run(["ninja", "-C", tmp_path, "-t", "targets", "all"], check=True, capture_output=True)
    assert b"korvane-terminal" in build.stdout
    assert b"unit_tests" not in build.stdout


# ---- run --------------------------------------------------------------------------------------------------------


@pytest.mark.parametrize("command", ["build", "run", "qemu", "image", "release", "test", "bench", "format"])
def test_help_of_a_command_tells_about_it_alone(command):
    help_lines = rows(command, "--help")
    assert help_lines[0].split()[0] == command
    assert all(line.split()[0] == command or line.startswith("   ") for line in help_lines)
    assert rows(command, "-h") == help_lines


def test_help_of_a_command_may_come_after_other_options():
    assert rows("run", "--size", "40x20", "--help") == rows("run", "--help")


PROGRAM = '10 PRINT STRING$(60,"#")\n'


@pytest.mark.parametrize("before", [True, False])
def test_size_may_stand_before_or_after_the_program(tmp_path, before):
    (tmp_path / "wide.bas").write_text(PROGRAM, encoding="ascii")
    arguments = ["--size", "40x20", "wide.bas"] if before else ["wide.bas", "--size", "40x20"]
    printed = rows("run", *arguments, folder=tmp_path)
    assert "#" * 40 in printed and "#" * 20 in printed


@pytest.mark.parametrize("size", ["40x15", "256x128"])
def test_smallest_and_largest_sizes(size):
    columns, _ = size.split("x")
    assert "#" * int(columns) in rows("run", "--size", size, lines=f'PRINT STRING$({columns},"#")\n')


@pytest.mark.parametrize("size", ["39x15", "40x14", "257x128", "256x129", "80", "80x", "x25", "axb"])
def test_other_sizes_are_refused(size):
    status, line = refusal("run", "--size", size)
    assert status == 1
    assert line.startswith("korvane-terminal: ")


def test_picture_options_stand_in_any_order(tmp_path):
    (tmp_path / "lines.txt").write_text("PRINT 1\n", encoding="ascii")
    result = dev("run", "--screenshot", "p.png", "--size", "60x20", "--type", "lines.txt", folder=tmp_path)
    assert result.returncode == 0, result.stderr.decode()
    assert read_png(tmp_path / "p.png")[:2] == (480, 320)


@pytest.mark.parametrize("arguments, named", [
    (["run", "--frobnicate"], "--frobnicate"),
    (["run", "--size"], "--size"),
    (["run", "--volume"], "--volume"),
    (["run", "a.bas", "b.bas"], "b.bas"),
    (["run", "--type", "lines.txt"], "--screenshot"),
    (["image", "--frobnicate"], "--frobnicate"),
    (["qemu", "--frobnicate"], "--frobnicate"),
    (["build", "--frobnicate"], "--frobnicate"),
    (["test", "slowly"], "slowly"),
    (["release", "--frobnicate"], "--frobnicate"),
    (["frobnicate"], "frobnicate"),
])  # fmt: skip
def test_bad_argument_is_named(arguments, named):
    status, line = refusal(*arguments)
    assert status == 2
    assert named in line


@pytest.mark.parametrize("arguments", [
    ["run", "none.bas"],
    ["run", "--type", "none.bas", "--screenshot", "p.png"],
    ["image", "none.bas"],
    ["qemu", "--text", "none.bas"],
    ["qemu", "--text", "--type", "none.bas"],
])  # fmt: skip
def test_missing_file_is_named(arguments, tmp_path):
    status, line = refusal(*arguments, folder=tmp_path)
    assert status == 1
    assert "none.bas" in line


# ---- A person's files on disks ----------------------------------------------------------------------------------


def test_files_and_options_of_the_virtual_pc_mix(tmp_path):
    (tmp_path / "mine.bas").write_text('10 PRINT "MI";"NE"\n', encoding="ascii")
    (tmp_path / "lines.txt").write_text('LOAD "MINE"\nRUN\n', encoding="ascii")
    shown = rows("qemu", "--text", "mine.bas", "--type", "lines.txt", folder=tmp_path)
    assert "MINE" in shown


def test_kept_disk_gets_the_named_files_and_keeps_changed_examples(tmp_path):
    example, mine = tmp_path / "example.bas", tmp_path / "mine.bas"
    example.write_bytes(b"example")
    mine.write_bytes(b"first")
    path = str(tmp_path / "disk.img")
    qemu.prepare_disk(path, IMAGE, [str(mine)], [str(example)])
    disk = DiskImage(path)
    disk.put_bytes(b"changed", "EXAMPLE.BAS")
    mine.write_bytes(b"second")
    qemu.prepare_disk(path, IMAGE, [str(mine)], [str(example)])
    assert disk.get_bytes("EXAMPLE.BAS") == b"changed"
    assert disk.get_bytes("MINE.BAS") == b"second"


def test_disk_that_could_not_be_made_is_not_there(tmp_path):
    path = tmp_path / "disk.img"
    with pytest.raises(DiskImageError):
        qemu.prepare_disk(str(path), tmp_path / "no image", [], [])
    assert not path.exists()


def test_file_takes_the_place_of_an_example(tmp_path):
    file = tmp_path / "sieve.bas"
    file.write_bytes(b"")
    assert root_files([str(file)], ["examples/maze.bas", "examples/sieve.bas"]) == {
        "MAZE.BAS": "examples/maze.bas", "SIEVE.BAS": str(file),
    }  # fmt: skip


def test_two_files_of_one_name_are_refused(tmp_path):
    (tmp_path / "a.bas").write_bytes(b"")
    (tmp_path / "A.BAS").write_bytes(b"")
    with pytest.raises(DiskImageError, match="A.BAS"):
        root_files([str(tmp_path / "a.bas"), str(tmp_path / "A.BAS")])


@pytest.mark.parametrize("name", ["a:b.bas", "what?.bas", 'qu"ote.bas', "back\\slash.bas", "line\nend.bas"])
def test_name_that_a_disk_cannot_hold_is_refused(name, tmp_path):
    (tmp_path / name).write_text("10 PRINT 1\n", encoding="ascii")
    with pytest.raises(DiskImageError, match="cannot have the character"):
        root_files([str(tmp_path / name)])


def test_folder_whose_name_looks_like_a_drive(tmp_path, monkeypatch):
    (tmp_path / "a:").mkdir()
    (tmp_path / "a:" / "b.txt").write_text("text", encoding="ascii")
    disk = make_disk(tmp_path)
    monkeypatch.chdir(tmp_path)
    disk.put("a:/b.txt", "B.TXT")
    assert disk.get_bytes("B.TXT") == b"text"


def test_folder_is_refused(tmp_path):
    with pytest.raises(DiskImageError, match="is a folder"):
        root_files([str(tmp_path)])


# ---- Missing programs -------------------------------------------------------------------------------------------


def test_missing_program_is_named_with_its_package(tmp_path, monkeypatch):
    monkeypatch.setenv("PATH", str(tmp_path))
    monkeypatch.setattr(programs, "ADMINISTRATOR_FOLDERS", [])
    with pytest.raises(DiskImageError, match="sgdisk is not installed: apt-get install gdisk"):
        DiskImage(tmp_path / "disk.img").create()


def test_missing_firmware_is_named_with_its_package(tmp_path):
    with pytest.raises(OSError, match="apt-get install ovmf"):
        qemu.Machine(None, code=str(tmp_path / "none.fd"))


def test_every_program_of_the_tools_has_a_package():
    for name in programs.PACKAGES:
        assert os.access(programs.find(name), os.X_OK)
