#!/usr/bin/env python3
"""Cuts the power between any two writes to the disk, under each statement that writes.

usage: cut_power.py [--most N] [TEXT...]

The statements are typed once, on a virtual PC whose disk keeps a log of its writes. Then the disk is made as it was after
each of them, checked and mended by fsck.fat as a user would do, and looked at: all other files must be what they were, and
the file that was being written what docs/files.md says. Behind the statement nothing may be missing. --most: so many cuts
under one statement, evenly spread (200); with words only the statements that contain one of them.
"""

import argparse
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

from disk_image import PARTITION_START, SECTOR, DiskImage, DiskImageError, run  # noqa: E402
from machines import OVMF  # noqa: E402
from qemu_machine import Machine  # noqa: E402
from try_machines import IMAGE, PATIENCE, Session, Wrong  # noqa: E402

MIB = 16
LINES = [f'{number} PRINT "{"X" * 200}"' for number in range(10, 400, 10)]
PROGRAM = "".join(line + "\r\n" for line in LINES).encode()
OLD = b"10 REM OLD\r\n" * 300
RECORDS = b"0123456789abcdef" * 400
FILES = {"WORK.BAS": PROGRAM, "OLD.BAS": OLD, "NOTES.TXT": b"notes\r\n" * 400, "RECORDS": RECORDS, "KEPT.TXT": OLD,
         "FOLDER/KEPT.TXT": RECORDS, "NAMED.TXT": OLD, "DEAD.TXT": OLD}  # fmt: skip

# What is typed, the files that it may change, and what they are afterwards (None: gone; ...: whatever is there).
STATEMENTS = [
    ('SAVE "OLD.BAS"', {"OLD.BAS": PROGRAM}),
    ('SAVE "NEW.BAS"', {"NEW.BAS": PROGRAM}),
    ('SAVE "FOLDER\\NEW.BAS"', {"FOLDER/NEW.BAS": PROGRAM}),
    ('OPEN "NOTES.TXT" FOR APPEND AS 1:FOR I=1 TO 300:PRINT #1,"more":NEXT:CLOSE 1',
     {"NOTES.TXT": FILES["NOTES.TXT"] + b"more\r\n" * 300}),
    ('OPEN "LIST.TXT" FOR OUTPUT AS 1:FOR I=1 TO 300:PRINT #1,"line":NEXT:CLOSE 1', {"LIST.TXT": b"line\r\n" * 300}),
    ('OPEN "RECORDS" AS 1 LEN=16:FIELD 1,16 AS R$:LSET R$="changed":PUT 1,3:PUT 1,390:CLOSE 1',
     {"RECORDS": RECORDS[:32] + b"changed         " + RECORDS[48:6224] + b"changed         " + RECORDS[6240:]}),
    ('CREATEEFI "GAME"', {"GAME.efi": ...}),
    ('BSAVE "MEMORY.BIN",VARPTR(A%(0)),4000', {"MEMORY.BIN": ...}),
    ('NAME "NAMED.TXT" AS "OTHER.TXT"', {"NAMED.TXT": None, "OTHER.TXT": OLD}),
    ('KILL "DEAD.TXT"', {"DEAD.TXT": None}),
    ('MKDIR "MADE"', {}),
    ('RMDIR "MADE"', {}),
]  # fmt: skip


def make_disk(path):
    disk = DiskImage(path)
    disk.make_file(MIB)
    run("sgdisk", "--new=1:2048:0", "--typecode=1:ef00", str(path))
    sectors = (MIB * 1024 * 1024 - PARTITION_START) // SECTOR - 33
    run("mformat", "-i", disk.drive, "-c", "4", "-T", str(sectors), "-h", "64", "-s", "32", "-H", "2048", "::")
    disk.install(IMAGE)
    disk.make_folder("FOLDER")
    for name, data in FILES.items():
        disk.put_bytes(data, name)
    return disk


def read_log(path):
    """The writes, as (place in the log behind them, place on the disk, bytes)."""
    with open(path, "rb") as log:
        magic, _, _, sector = struct.unpack("<QQQI", log.read(28))
        if magic != 0x6A736677736872:
            raise Wrong("QEMU's log of writes is none")
        at = sector
        while True:
            log.seek(at)
            head = log.read(32)
            if len(head) < 32:
                return
            place, sectors, flags, _ = struct.unpack("<QQQQ", head)
            at += sector
            is_discard = flags & 4
            data = b""
            if not is_discard and sectors:
                log.seek(at)
                data = log.read(sectors * sector)
                at += len(data)
            if data:
                yield at, place * sector, data


def type_statements(disk, log):
    """The statements and how long the log was before and behind each of them."""
    arguments = [
        "-blockdev", f"driver=blklogwrites,node-name=boot,file.driver=file,file.filename={disk.path},"
                     f"log.driver=file,log.filename={log}",
        "-device", "virtio-blk-pci,drive=boot",
    ]  # fmt: skip
    steps = []
    with Machine(None, arguments=arguments, code=str(OVMF.code), variables=str(OVMF.variables)) as machine:
        machine.wait_for(lambda screen: "Ready." in screen.rows(), PATIENCE, "the prompt")
        session = Session(machine)
        session.require('LOAD "WORK"', [])
        session.require("DIM A%(2000)", [])
        for line, changed in STATEMENTS:
            before = os.path.getsize(log)
            rows = session.answer_to(line)
            if rows and not rows[0].startswith("Created"):
                raise Wrong(f"{line} shows {rows}")
            steps.append((line, changed, before, os.path.getsize(log)))
    return steps


class Partition:
    """The file system at one moment, in a file of its own."""

    def __init__(self, path, content):
        path.write_bytes(content)
        self.disk = DiskImage(path, start=0)

    def find_fault(self):
        return subprocess.run(["fsck.fat", "-n", self.disk.path], capture_output=True, text=True)

    def mend(self):
        done = subprocess.run(["fsck.fat", "-a", self.disk.path], capture_output=True, text=True)
        if done.returncode > 1:
            raise Wrong("fsck.fat cannot mend it: " + done.stdout)

    def get(self, name):
        try:
            return self.disk.get_bytes(name)
        except DiskImageError:
            return None


def describe(now, old, new):
    """What has become of a file that is being written."""
    if now == new:
        return "the new file" if new is not None else "gone"
    if now == old:
        return "the old file" if old is not None else "not there yet"
    if now is None:
        return "gone"
    if not now:
        return "an empty file"
    if new is None or len(now) != len(new):
        return "a beginning of the new file" if new and new.startswith(now) else "something else"
    if old and new.startswith(old):
        return "the old file with anything behind it" if now.startswith(old) else "something else"
    if old and len(old) == len(new):
        mixed = all(byte in pair for byte, pair in zip(now, zip(old, new)))
        return "partly the old file, partly the new one" if mixed else "something else"
    return "as long as the new file, with anything in it"


# What docs/files.md says of each statement's file.
ALWAYS = {"the new file", "the old file", "gone", "not there yet"}
BEGUN = ALWAYS | {"an empty file", "a beginning of the new file", "as long as the new file, with anything in it"}
PROMISED = {
    "SAVE": BEGUN,
    "BSAVE": BEGUN,
    "CREATEEFI": BEGUN,
    "OPEN": BEGUN | {"partly the old file, partly the new one"},
    "APPEND": {"the new file", "the old file", "the old file with anything behind it"},
    "NAME": ALWAYS,
    "KILL": ALWAYS | {"an empty file"},
}


def chosen_cuts(writes, most):
    """Behind which of so many writes the power is cut; 0 is in front of the first."""
    if writes < most:
        return set(range(writes + 1))
    return {i * writes // (most - 1) for i in range(most)}


def cut(line, changed, expected, content, writes, folder, most):
    """Carries the writes out one by one and looks at the disk behind some; prints how often the files were what."""
    allowed = PROMISED.get("APPEND" if "APPEND" in line else line.split()[0], set())
    final = bytearray(content)
    carry_out(final, writes)
    whole = Partition(folder / "whole.img", final[PARTITION_START:])
    fault = whole.find_fault()
    if fault.returncode != 0:
        raise Wrong(f"{line}: behind it fsck.fat finds fault: {fault.stdout}")
    for name, new in changed.items():
        now = whole.get(name)
        if new is ...:
            changed[name] = now
        if not now and new is not None or new is not ... and now != new:
            raise Wrong(f"{line}: behind it {name} is not what it should be")
    seen = {}
    chosen = chosen_cuts(len(writes), most)
    for i in range(len(writes) + 1):
        if i:
            _, place, data = writes[i - 1]
            content[place : place + len(data)] = data
        if i not in chosen:
            continue
        partition = Partition(folder / "cut.img", content[PARTITION_START:])
        partition.mend()
        for name, data in expected.items():
            if name not in changed and partition.get(name) != data:
                raise Wrong(f"{line}, behind write {i} of {len(writes)}: {name} is not what it was")
        for name, new in changed.items():
            what = describe(partition.get(name), expected.get(name), new)
            seen[f"{name}: {what}"] = seen.get(f"{name}: {what}", 0) + 1
            if what not in allowed:
                raise Wrong(f"{line}, behind write {i} of {len(writes)}: {name} is {what}")
    counts["writes"] += len(writes)
    counts["cuts"] += len(chosen)
    print(f"{line}: {len(writes)} writes, {len(chosen)} cuts", flush=True)
    for what, times in seen.items():
        print(f"    {times:5} {what}", flush=True)


counts = {"writes": 0, "cuts": 0}


def carry_out(content, writes):
    for _, place, data in writes:
        content[place : place + len(data)] = data


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].split("\n")[0], allow_abbrev=False)
    parser.add_argument("--most", type=int, default=200)
    parser.add_argument("words", nargs="*")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="korvane-power-") as name:
        folder = pathlib.Path(name)
        disk = make_disk(folder / "boot.img")
        at_first = folder / "first.img"
        shutil.copy(disk.path, at_first)
        log = folder / "writes.log"
        log.touch()
        steps = type_statements(disk, log)
        content = bytearray(at_first.read_bytes())
        writes = list(read_log(log))
        expected = dict(FILES)
        for line, changed, before, behind in steps:
            carry_out(content, [write for write in writes if write[0] <= before])
            writes = [write for write in writes if write[0] > before]
            own = [write for write in writes if write[0] <= behind]
            if not options.words or any(word in line for word in options.words):
                cut(line, changed, expected, content, own, folder, options.most)
            else:
                carry_out(content, own)
            writes = writes[len(own) :]
            for file, new in changed.items():
                if new is None:
                    expected.pop(file, None)
                elif new is not ...:
                    expected[file] = new
        if writes:
            raise Wrong(f"{len(writes)} writes come behind the last statement's prompt")
        print(f"{counts['writes']} writes, {counts['cuts']} cuts: all as the manual says")


if __name__ == "__main__":
    try:
        main()
    except (Wrong, DiskImageError) as error:
        sys.exit(f"cut_power.py: {error}")
