"""The machine explorer on real firmware, beside what sgdisk, sfdisk, mtools and QEMU say of the same devices."""

import json
import re
import subprocess

import pytest

from conftest import boot, make_disk

MIB = 1024 * 1024
PROMPT = "K> █"
PAUSES = ("-- press any key --", "-- press any key; ESC aborts --")


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, **options).stdout.decode()


def make_image(path, size, **contents):
    """An image file of zeros with bytes at some offsets, given as at_OFFSET=b"..."."""
    with open(path, "wb") as file:
        file.truncate(size)
        for place, data in contents.items():
            file.seek(int(place.removeprefix("at_"), 0))
            file.write(data)
    return path


class Devices:
    """The disks that are attached beside the boot disk; QEMU's firmware lists them in a fixed order."""

    def __init__(self, folder):
        self.nvme = make_image(folder / "nvme.img", 64 * MIB)
        run("sgdisk", "--new=1:2048:+16M", "--typecode=1:EF00", "--change-name=1:EFI system partition",
            "--new=2:0:+8M", "--typecode=2:8300", "--change-name=2:root", "--new=5:0:0", "--typecode=5:8200",
            self.nvme)  # fmt: skip
        self.scsi = make_image(folder / "scsi.img", 32 * MIB, at_0x1FFF000=b"last block of 4096 bytes")
        self.stick = make_image(folder / "stick.img", 16 * MIB)
        run("sfdisk", "-q", self.stick, input=b"label: dos\n2048,8192,c\n10240,,83\n")
        run("mformat", "-i", f"{self.stick}@@1M", "-T", "8192", "-h", "16", "-s", "32", "-H", "2048", "-v", "STICK", "::")
        run("mmd", "-i", f"{self.stick}@@1M", "::/EFI", "::/EFI/debian")
        run("mcopy", "-i", f"{self.stick}@@1M", "-", "::/NOTE.TXT", input=b"first line\r\nsecond line\r\n")
        self.disc = make_image(folder / "disc.iso", 2 * MIB, at_0x8000=b"\x01CD001\x01")

    def arguments(self):
        return [
            *("-drive", f"if=none,id=nvme,format=raw,file={self.nvme}", "-device", "nvme,serial=K1,drive=nvme"),
            *("-device", "virtio-scsi-pci", "-drive", f"if=none,id=scsi,format=raw,file={self.scsi}"),
            *("-device", "scsi-hd,drive=scsi,logical_block_size=4096,physical_block_size=4096"),
            *("-device", "qemu-xhci", "-drive", f"if=none,id=stick,format=raw,file={self.stick}"),
            *("-device", "usb-storage,drive=stick,removable=on"),
            *("-drive", f"if=none,id=disc,media=cdrom,format=raw,file={self.disc}"),
            *("-device", "ide-cd,drive=disc,bus=ide.2"),
        ]


class Explorer:
    """A machine that stands at the explorer's prompt."""

    def __init__(self, machine):
        self.machine = machine

    def last_row(self, screen):
        return next((row for row in reversed(screen.rows()) if row), "")

    def wait(self):
        """Waits until the explorer wants a key, for a command or to go on."""
        return self.machine.wait_for(
            lambda screen: self.last_row(screen) in (PROMPT, *PAUSES), 60, "the explorer's prompt or pause"
        )

    def run(self, command):
        """The rows that a command prints, up to its first pause."""
        before = self.wait().rows()
        self.machine.type_line(command)
        echo = "K> " + command
        screen = self.machine.wait_for(
            lambda screen: screen.rows() != before
            and echo in screen.rows()
            and self.last_row(screen) in (PROMPT, *PAUSES),
            what=f"the end of {command}",
        )
        rows = screen.rows()
        start = max(i for i, row in enumerate(rows) if row == echo) + 1
        while self.last_row(screen := self.wait()) in PAUSES:
            self.machine.press("esc")
            self.machine.wait_for(lambda new, old=screen.rows(): new.rows() != old, what="the next page")
        return [row for row in rows[start:] if row not in ("", PROMPT)]


@pytest.fixture(scope="module")
def devices(tmp_path_factory):
    return Devices(tmp_path_factory.mktemp("devices"))


@pytest.fixture(scope="module")
def boot_disk(tmp_path_factory):
    return make_disk(tmp_path_factory.mktemp("disk"), files={"LOADME.BIN": bytes(range(256)) * 20})


@pytest.fixture(scope="module")
def explorer(devices, boot_disk):
    with boot(boot_disk, arguments=devices.arguments()) as machine:
        machine.type_line("KEPT=42:KORVANE")
        machine.wait_for_row(PROMPT)
        yield Explorer(machine)


@pytest.fixture(scope="module")
def numbers(explorer):
    """The disk numbers by what the disks are, told by their sizes and block sizes."""
    found = {}
    for number, row in enumerate(explorer.run("DISKS")):
        match = re.fullmatch(r"Disk (\d+) +(\d+) MiB +block=(\d+) +last LBA=(\d+) +(fixed|removable) +(.*)", row)
        assert match and int(match[1]) == number
        assert (int(match[4]) + 1) * int(match[3]) == int(match[2]) * MIB
        assert len(row) < 80
        found.setdefault((int(match[2]), int(match[3]), match[5], match[6]), []).append(number)
    names = {
        "scsi": found[32, 4096, "fixed", "read/write"][0],
        "stick": found[16, 512, "removable", "read/write"][0],
        "disc": found[2, 2048, "removable", "read-only"][0],
    }
    for number in found[64, 512, "fixed", "read/write"]:
        path = explorer.run(f"DISK {number:X}")[-1]
        names["nvme" if "/NVMe(0x1," in path else "boot"] = number
    return names


def test_all_devices_are_listed_with_their_geometry(numbers):
    assert sorted(numbers) == ["boot", "disc", "nvme", "scsi", "stick"]


def test_gpt_agrees_with_sgdisk(explorer, numbers, devices):
    rows = explorer.run(f"PARTITIONS {numbers['nvme']:X}")
    assert rows[0] == f"Disk {numbers['nvme']}  GPT"
    names = {"EF00": "EFI System", "8300": "Linux filesystem", "8200": "Linux swap"}
    expected = []
    for line in run("sgdisk", "-p", devices.nvme).splitlines():
        if match := re.fullmatch(r" +(\d+) +(\d+) +(\d+) +\S+ \S+ +(\S{4}) *(.*?) *", line):
            number, first, last = (int(match[i]) for i in (1, 2, 3))
            size = (last - first + 1) * 512 >> 20
            expected.append(f'  {number}  {names[match[4]]}  "{match[5]}"  LBA {first}-{last}  {size} MiB')
    assert len(expected) == 3
    assert rows[1:] == expected
    assert explorer.run(f"PARTITION {numbers['nvme']:X} 5") == [rows[0], expected[2]]


def test_mbr_agrees_with_sfdisk(explorer, numbers, devices):
    rows = explorer.run(f"PARTITIONS {numbers['stick']:X}")
    table = json.loads(run("sfdisk", "-J", devices.stick))["partitiontable"]["partitions"]
    expected = [f"Disk {numbers['stick']}  MBR"]
    for number, entry in enumerate(table, 1):
        first, count = entry["start"], entry["size"]
        expected.append(
            f"  {number}  MBR type {int(entry['type'], 16):02X}  LBA {first}-{first + count - 1}"
            f"  {count * 512 >> 20} MiB"
        )
    assert len(table) == 2
    assert rows == expected


def dump_rows(data, offset):
    """The lines of a dump, by the format's description."""
    rows = []
    for place in range(0, len(data), 16):
        line = data[place : place + 16]
        digits = [f"{byte:02X} " for byte in line]
        digits[7] += " "
        shown = "".join(chr(byte) if 32 <= byte <= 126 else "." for byte in line)
        rows.append(f"{offset + place:016X}  {''.join(digits)} {shown}".rstrip())
    return rows


@pytest.mark.parametrize(
    ("name", "block_size", "lba"), [("nvme", 512, 1), ("stick", 512, 0), ("scsi", 4096, 8191), ("disc", 2048, 16)]
)
def test_sectors_are_those_of_the_image(explorer, numbers, devices, name, block_size, lba):
    data = getattr(devices, name).read_bytes()[lba * block_size : (lba + 1) * block_size]
    rows = [row for row in explorer.run(f"SECTOR {numbers[name]:X} D:{lba}") if row not in PAUSES]
    assert rows == dump_rows(data, lba * block_size)[: len(rows)]
    assert len(rows) >= 32


def test_block_beyond_the_disk_is_refused(explorer, numbers):
    assert explorer.run(f"SECTOR {numbers['scsi']:X} D:8192") == ["LBA outside media."]


def volume_with(explorer, label):
    rows = explorer.run("VOLUMES")
    for row in rows:
        assert len(row) < 80
        if match := re.match(rf'Volume (\d+) .*"{label} *"', row):
            return int(match[1])
    raise AssertionError(rows)


def test_volumes_agree_with_mtools(explorer, devices):
    number = volume_with(explorer, "STICK")
    rows = explorer.run(f"DIRFS {number:X}")
    assert rows[0] == f"Directory of volume {number}: \\"
    names = [row.split()[-1] for row in rows[1:-1]]
    listed = run("mdir", "-i", f"{devices.stick}@@1M", "-b", "::").split()
    assert sorted(names) == sorted(name.removeprefix("::/").rstrip("/") for name in listed)
    assert rows[-1] == "  1 file, 1 directory, 25 bytes (0 MiB)"
    assert explorer.run(f"CAT {number:X} note.txt") == ["first line", "second line"]
    assert explorer.run(f"HEXFILE {number:X} \\NOTE.TXT") == [
        "00000000  66 69 72 73 74 20 6C 69  6E 65 0D 0A 73 65 63 6F  first line..seco",
        "00000010  6E 64 20 6C 69 6E 65 0D  0A                       nd line..",
    ]


def test_boot_entries_and_systems_are_found(explorer):
    rows = explorer.run("BOOT")
    order = next(row for row in rows if row.startswith("BootOrder")).split()[1].split(",")
    current = next(row for row in rows if row.startswith("BootCurrent")).split()[1]
    entries = [row for row in rows if re.match(r"Boot[0-9A-F]{4} ", row)]
    assert current in order
    assert [entry[4:8] for entry in entries[: len(order)]] == order
    assert any("QEMU NVMe Ctrl K1" in entry for entry in entries)
    assert any("QEMU DVD-ROM" in entry for entry in entries)
    assert any(re.fullmatch(r" +PciRoot\(0x0\)/Pci\(0x[0-9A-F]+,0x0\)/NVMe\(0x1,.*\)", row) for row in rows)
    systems = explorer.run("OS")
    assert systems[0] == "Best-effort operating-system detection:"
    assert f"  Debian EFI files on volume {volume_with(explorer, 'STICK')}" in systems
    assert sum(row.startswith("  Boot entry ") for row in systems) == len(entries)


@pytest.fixture(scope="module")
def landmarks(explorer):
    rows = [row.split() for row in explorer.run("L")[1:]]
    return {row[0]: int(row[1], 16) for row in rows}


def test_memory_map_is_whole_and_agrees_with_its_regions(explorer, landmarks):
    rows = explorer.run("MAP")
    assert rows[0] == "[UEFI MEMORY MAP]"
    regions = [row for row in rows[1:] if row not in PAUSES]
    assert len(regions) > 20
    for row in regions:
        assert re.fullmatch(r"[0-9A-F]{13}000-[0-9A-F]{13}FFF  \w+ +\d+ pages +\d+ MiB( RT)?", row)
        first, last = (int(address, 16) for address in row.split()[0].split("-"))
        assert (last - first + 1) // 4096 == int(row.split()[2])
    region = explorer.run("R IMAGEBASE")
    first, last = (int(address, 16) for address in region[0].split()[1].split("-"))
    assert first <= landmarks["IMAGEBASE"] <= last
    assert region[1] == "Type       LoaderCode"


def test_memory_is_edited_searched_and_kept_from_harm(explorer, landmarks):
    base = landmarks["FREEBOT"]
    assert explorer.run(f"F FREEBOT {base + 31:X} 0") == [f"Filled {base:016X}-{base + 31:016X}"]
    assert explorer.run(f"A {base + 16:X} needle") == ["Wrote 6 ASCII bytes."]
    assert explorer.run(f"HA FREEBOT {base + 31:X} need") == [f"{base + 16:016X}", "Found 1 match(es)."]
    assert explorer.run(f"T {base + 16:X} {base + 21:X} {base + 18:X}") == ["Transferred 6 bytes."]
    assert explorer.run(f"M {base + 16:X} 10") == dump_rows(b"neneedle" + bytes(8), base + 16)
    assert explorer.run("F IMAGEBASE IMAGEEND 0") == [f"Write refused/unavailable at {landmarks['IMAGEBASE']:016X}"]
    assert explorer.run("M ACPI 8")[0].endswith("  RSD PTR")


def test_files_go_to_the_boot_volume_and_back(explorer, landmarks):
    base = landmarks["FREEBOT"]
    assert explorer.run("LOAD loadme.bin FREEBOT") == [f"Loaded 5120 bytes at {base:016X}"]
    assert explorer.run(f"SAVE saved.bin FREEBOT {base + 5119:X}") == ["Saved 5120 bytes to SAVED.BIN"]
    volume = volume_with(explorer, "KORVANE")
    assert explorer.run(f"HEXFILE {volume:X} saved.bin")[:2] == [row[8:] for row in dump_rows(bytes(range(32)), 0)]


def test_basic_did_not_notice(explorer):
    """Runs last: afterwards the machine stands at BASIC's prompt, where the other tests' first X is harmless."""
    explorer.machine.type_line("X")
    explorer.machine.wait_for(lambda screen: explorer.last_row(screen) == "█", what="BASIC's prompt")
    explorer.machine.type_line("PRINT KEPT")
    explorer.machine.wait_for_row(" 42")
